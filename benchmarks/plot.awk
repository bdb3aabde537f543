# Draws values of a benchmark as an SVG with logarithmic axes: one line for each item, its contenders (numbers) along x, the
# medians up y.
#   awk -v title=T -v x=LABEL -v y=LABEL -v items=ITEM,ITEM -f plot.awk values.csv

function median(list,    n, v, i, j, t) {
  n = split(list, v, " ")
  for (i = 2; i <= n; i++) for (j = i; j > 1 && v[j - 1] + 0 > v[j] + 0; j--) { t = v[j]; v[j] = v[j - 1]; v[j - 1] = t }
  return v[int((n + 1) / 2)]
}
function log10(value) { return log(value) / log(10) }
function px(value) { return 70 + 500 * (log10(value) - x0) / (x1 - x0) }
function py(value) { return 350 - 300 * (log10(value) - y0) / (y1 - y0) }
function floor(value) { return value < int(value) ? int(value) - 1 : int(value) }
function power(exponent) { return exponent < 0 ? 10 ^ exponent : sprintf("%d", 10 ^ exponent) }
function say(at, up, anchor, text) { printf "<text x=\"%.0f\" y=\"%.0f\" text-anchor=\"%s\">%s</text>\n", at, up, anchor, text }

BEGIN {
  FS = ","
  count = split(items, name, ",")
  for (i = 1; i <= count; i++) wanted[name[i]] = 1
  split("#1f77b4 #d62728 #2ca02c #9467bd", colour, " ")
}
$1 in wanted {
  if (!(($1, $2) in values)) order[$1] = order[$1] " " $2
  values[$1, $2] = values[$1, $2] " " $4
}
END {
  for (key in values) {
    split(key, part, SUBSEP)
    m[key] = median(values[key])
    lx = log10(part[2]); ly = log10(m[key])
    if (!seen || lx < x0) x0 = lx
    if (!seen || lx > x1) x1 = lx
    if (!seen || ly < y0) y0 = ly
    if (!seen || ly > y1) y1 = ly
    seen = 1
  }
  y0 = floor(y0); y1 = floor(y1) + 1
  print "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 720 400\" font-family=\"sans-serif\" font-size=\"12\">"
  print "<rect width=\"720\" height=\"400\" fill=\"white\"/>"
  say(70, 24, "start", title)
  say(70, 42, "start", y)
  for (e = y0; e <= y1; e++) {
    printf "<path d=\"M70 %.0fh500\" stroke=\"#ddd\"/>\n", py(10 ^ e)
    say(64, py(10 ^ e) + 4, "end", power(e))
  }
  for (i = 1; i <= count; i++) {
    n = split(order[name[i]], at, " ")
    line = ""
    for (j = 1; j <= n; j++) {
      if (!(at[j] in labelled)) say(px(at[j]), 368, "middle", at[j])
      labelled[at[j]] = 1
      v = m[name[i], at[j]]
      line = line sprintf("%s%.1f %.1f", j == 1 ? "M" : "L", px(at[j]), py(v))
      printf "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"3\" fill=\"%s\"/>\n", px(at[j]), py(v), colour[i]
    }
    printf "<path d=\"%s\" fill=\"none\" stroke=\"%s\" stroke-width=\"2\"/>\n", line, colour[i]
    printf "<path d=\"M585 %dh20\" stroke=\"%s\" stroke-width=\"2\"/>\n", 60 + 20 * i, colour[i]
    say(610, 64 + 20 * i, "start", substr(name[i], 3))
  }
  say(320, 390, "middle", x)
  print "</svg>"
}
