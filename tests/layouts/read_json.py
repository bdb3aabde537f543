#!/usr/bin/env python3
"""read_json.py LINES EXPECTED: fails unless each line is an object whose texts have the expected characters."""

import json
import sys


def once(pairs):
    names = [name for name, _ in pairs]
    assert len(names) == len(set(names)), f"a name twice: {names}"
    return dict(pairs)


def check(event, number, expected):
    def characters(text):
        return [ord(character) for character in text]

    assert characters(event["message"]) == expected
    context = event.get("context") or event.get("labels") or event.get("logging.googleapis.com/labels")
    if number % 2 == 1:
        assert characters(context["text"]) == expected and int(context["n"]) == number
        return
    assert characters(context["text"]) == expected and "n" not in context
    assert type(event["n"]) is int and event["n"] == number and type(event["__message"]) is float
    assert characters(event["field"]) == expected and characters(event["_message"]) == expected


with open(sys.argv[1], encoding="utf-8", newline="\n") as lines, open(sys.argv[2], encoding="ascii") as lists:
    count = 0
    for number, (line, expected) in enumerate(zip(lines, lists, strict=True)):
        try:
            check(json.loads(line, object_pairs_hook=once), number, json.loads(expected))
        except (AssertionError, KeyError, TypeError, ValueError) as error:
            sys.exit(f"line {number + 1}: {error!r}: {line!r}")
