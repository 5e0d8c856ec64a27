"""Reads one JSON document from a file and prints, for each query, the value
at that path as JSON on a line of its own. A query is a path of object keys
and array positions joined by '/', e.g. 'streams/0/name'; 'len:' before it
prints the length of the value instead."""
import json
import sys


def lookup(document, path):
    value = document
    for part in path.split("/") if path else []:
        value = value[int(part)] if isinstance(value, list) else value[part]
    return value


def main():
    with open(sys.argv[1], encoding="utf-8") as stream:
        document = json.load(stream)
    for query in sys.argv[2:]:
        if query.startswith("len:"):
            print(len(lookup(document, query[4:])))
        else:
            print(json.dumps(lookup(document, query)))


main()
