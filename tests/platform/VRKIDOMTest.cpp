#include "tests/support/Tests.h"

using namespace vrktest;

namespace {

struct VRKIDOMTest : testing::Test {
  VRKIDOM_Document parse(const std::string& text, int loadExternalDTD = 0) const {
    VRKIDOM_Parser parser;
    parser.setLoadExternalDTD(loadExternalDTD);
    return parser.parse(directory.write("log.xml", text).c_str());
  }
  /// The text of the error, or "parsed".
  static std::string failureOf(const std::string& path) {
    try {
      VRKIDOM_Parser().parse(path.c_str());
    } catch (const VRKThrowable& error) {
      return error.getText().toUtf8();
    }
    return "parsed";
  }

  const TempDir directory;
};

std::string allText(const VRKIDOM_Node& node) {
  std::string text = node.getNodeName().toUtf8() + "=" + node.getNodeValue().toUtf8();
  const VRKIDOM_NodeList children = node.getChildNodes();
  for (long i = 0; i < children.getLength(); ++i) text += "\n" + allText(children.item(i));
  return text;
}

std::string repeated(const std::string& text, std::size_t times) {
  return replaced(std::string(times, '#'), "#", text);
}

// `kind` is "" for general and "%" for parameter entities. The last stands for a thousand million copies of the first.
std::string laughs(const std::string& kind, const std::string& reference, const std::string& first) {
  std::string text = "<!DOCTYPE a [", value = first;
  for (char i = '0'; i <= '9'; ++i) {
    text.append("<!ENTITY ").append(kind).append(" z").append(1, i).append(" \"").append(value).append("\">");
    value = repeated(reference + "z" + i + ";", 10);
  }
  return text;
}

}  // namespace

TEST_F(VRKIDOMTest, HandlesOutliveTheParserAndTheirDocument) {
  VRKIDOM_Node second;
  {
    VRKIDOM_DOMImplementation::initialize();
    const VRKIDOM_Document document =
        parse("<log4j:configuration debug='true'>\n <a n='1'/><b><a n='2'\n  m=''/></b></log4j:configuration>");
    const VRKIDOM_Element root = document.getDocumentElement();
    EXPECT_TRUE(root.getTagName() == "log4j:configuration" && root.getAttribute("debug") == "true");
    EXPECT_TRUE(VRKIDOM_Element(root.getChildNodes().item(0)).isNull()) << "white space is no element";
    second = document.getElementsByTagName("a").item(1);
    VRKIDOM_DOMImplementation::terminate();
  }
  EXPECT_TRUE(second.getNodeType() == VRKIDOM_Node::ELEMENT_NODE && second.getLineNumber() == 2 &&
              second.getColumnNumber() == 15)
      << "where the tag begins, not where it ends";
  EXPECT_EQ(second.getAttributes().getNamedItem("n").getNodeValue(), "2");
  const VRKIDOM_NodeList all = second.getOwnerDocument().getElementsByTagName("a");
  const VRKIDOM_Element none(all.item(2));
  EXPECT_TRUE(all.getLength() == 2 && none.isNull() && all.item(-1).isNull()) << "null handles answer everything";
  EXPECT_TRUE(none.getTagName() + none.getAttribute("a") == "" && none.getChildNodes().item(0).isNull() &&
              none.getAttributes().getNamedItem("a").isNull() && none.getOwnerDocument().getDocumentElement().isNull());
}

TEST_F(VRKIDOMTest, HoldsNodesOfEveryKind) {
  const VRKIDOM_Document document = parse(
      "<!--head--><!DOCTYPE a [<!ATTLIST b v CDATA 'dflt'><!ENTITY e 'ent<b/>tail'>]><a>\n x&e;y<![CDATA[<]]>z&amp;"
      "<!--c--><?go now?><b v='1'/>\r\n</a><?end?>");
  EXPECT_EQ(
      allText(document),
      "#document=\n#comment=head\na=\na=\n#text=\n xent\nb=\n#text=taily\n#cdata-section=<\n#text=z&\n#comment=c\n"
      "go=now\nb=\n#text=\n\nend=");
  EXPECT_EQ(VRKIDOM_Element(document.getElementsByTagName("*").item(1)).getAttribute("v"), "dflt");
}

TEST_F(VRKIDOMTest, MovesNodesToWhereTheyMayStand) {
  VRKIDOM_Document document = parse("<a><b/>x<c><d/></c></a>");
  VRKIDOM_Element a = document.getDocumentElement();
  VRKIDOM_Node b = a.getChildNodes().item(0), text = a.getChildNodes().item(1), c = a.getChildNodes().item(2);
  VRKIDOM_Node d = c.getChildNodes().item(0);
  const VRKIDOM_Element stranger = VRKIDOM_DOMImplementation::getImplementation().createDocument().createElement("e");
  for (auto& [parent, child] : std::vector<std::pair<VRKIDOM_Node, VRKIDOM_Node>>{
           {a, a}, {d, a}, {text, b}, {document, b}, {document, text}, {a, document}, {a, stranger}}) {
    EXPECT_THROW(parent.appendChild(child), VRKThrowable) << parent.getNodeName().toUtf8();
  }
  b.appendChild(d);                              // the only child
  a.appendChild(b);                              // the first
  for (int i = 0; i < 2; ++i) a.appendChild(c);  // one between others, the last
  EXPECT_EQ(allText(document), "#document=\na=\n#text=x\nb=\nd=\nc=");
  for (const char16_t* name : {u"", u"1", u"a b", u"\u00d7", u"a\xD800"}) {
    EXPECT_THROW(document.createElement(name), VRKThrowable) << I18NString(name).toUtf8();
  }
}

TEST_F(VRKIDOMTest, ReadsTextInEveryEncoding) {
  const std::pair<const char*, const char16_t*> CASES[] = {
      {"<a v='&#233;\xC3\xA9\xF0\x9F\x98\x80'/>", u"\u00e9\u00e9\U0001F600"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a v='\xE9'/>", u"\u00e9"},
      {"<!DOCTYPE a [<!ENTITY d '/var/log'>]><a v='&d;/x&amp;&lt;'/>", u"/var/log/x&<"}};
  for (const auto& [text, value] : CASES) {
    EXPECT_EQ(parse(text).getDocumentElement().getAttribute("v"), value) << text;
  }
  EXPECT_EQ(failureOf(directory.write("m\xC3\xA4rz %41#?.xml", "<a/>")), "parsed") << "a name is never decoded";
}

TEST_F(VRKIDOMTest, TellsWhereAndWhyADocumentFails) {
  ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
  for (const std::string document : {"missing.xml: No such file", ".: not a regular", "pipe: not a regular"}) {
    EXPECT_EQ(failureOf(directory.file(document.substr(0, document.find(':')))).find(directory.file(document)), 0u);
  }
  const std::pair<std::string, std::string> CASES[] = {{"", ": the file is empty"},
                                                       {"\n\n", ":3:1: "},
                                                       {"<a>\n  <b>\n  </c>\n</a>", ":3:5: "},
                                                       {"<a><b/>", ":1:8: "},
                                                       {"<a>\n<b x='1' x='2'/></a>", ":2:"},
                                                       {"<a>&none;</a>", ":1:10: "},
                                                       {"<a>\xFF</a>", ":1:"},
                                                       {"<a>" + std::string(17 << 20, ' ') + "</a>", ": larger"}};
  for (const auto& [document, begin] : CASES) {
    const std::string path = directory.write("log.xml", document), text = failureOf(path);
    EXPECT_EQ(text.find(path + begin), 0u) << text;
  }
  const std::string url = "file://" + directory.write("good.xml", "<a/>");
  EXPECT_EQ(failureOf(url).find(url + ": No such file"), 0u) << "a name is no URL";
  EXPECT_THROW(VRKIDOM_Parser().parse(nullptr), VRKThrowable);
}

TEST_F(VRKIDOMTest, ReadsNothingOutsideTheDocument) {
  const std::string secret = directory.write("secret.txt", "MARKER");
  const std::string dtd = directory.write("log.dtd", "<!ENTITY fromDTD 'MARKER'><!ATTLIST a v CDATA 'MARKER'>");
  const std::string declarations = directory.write("log.ent", "<!ENTITY inner 'MARKER'>");
  const std::string text = "<!DOCTYPE a SYSTEM '" + dtd + "' [<!ENTITY e SYSTEM '" + secret +
                           "'><!ENTITY % p SYSTEM '" + declarations +
                           "'> %p;]><a w='x'>&e;&inner;&fromDTD;<xi:include parse='text' href='" + secret +
                           "' xmlns:xi='http://www.w3.org/2001/XInclude'/></a>";
  for (int load : {0, 1}) {
    const VRKIDOM_Element root = parse(text, load).getDocumentElement();
    EXPECT_EQ(allText(root), "a=\nxi:include=") << "load " << load;
    EXPECT_TRUE(root.getAttribute("v").isEmpty() && root.getAttribute("w") == "x");
  }
}

// Each of these would take gigabytes, or hours, if it were let.
TEST_F(VRKIDOMTest, RefusesDocumentsThatMultiplyThemselves) {
  const std::string large(100000, 'x');
  const std::vector<std::string> documents = {
      laughs("", "&", "lol") + "]><a>&z9;</a>",
      laughs("", "&", "lol") + "]><a v='&z9;'/>",
      laughs("", "&", "lol") + "<!ATTLIST a v CDATA '&z9;'>]><a/>",
      laughs("%", "&#37;", "") + "%z9;]><a/>",
      "<!DOCTYPE a [<!ENTITY z '" + large + "'>]><a>" + repeated("&z;", 9000) + "</a>",
      "<!DOCTYPE a [<!ATTLIST b v CDATA '" + large + "'>]><a>" + repeated("<b/>", 9000) + "</a>",
  };
  for (const std::string& document : documents) {
    const std::string text = failureOf(directory.write("log.xml", document));
    EXPECT_TRUE(text.find("512 MB") != text.npos || text.find("entity expansions") != text.npos) << text;
  }
}

TEST_F(VRKIDOMTest, RefusesBottomlessDocumentsInSeveralThreadsAtOnce) {
  const std::string path = directory.file("log.xml"), tooDeep = path + ":257:5: elements are nested more than 256 deep";
  for (const std::size_t depth : {256, 257, 100000}) {
    directory.write("log.xml", repeated("<a>\n<b/>", depth - 1) + "<a>" + repeated("</a>", depth));
    onThreads(2, [&](int) { EXPECT_EQ(failureOf(path), depth == 256 ? "parsed" : tooDeep); });
  }
}
