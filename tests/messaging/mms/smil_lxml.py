#!/usr/bin/python3
"""Media references of SMIL presentations as libxml2's recovering parser reads them.

Usage: smil_lxml.py FILE...   Prints, per file, "file<TAB>NAME" then one "ref<TAB>SRC" line per
src attribute of an img, text, audio, video, ref, animation or textstream element, in document
order (names compared without regard to case, as the library does).

libxml2 gives up on a document whose XML declaration ends "?/>" or whose DOCTYPE ends "/>" and
returns no root even in recover mode; the prolog is then dropped and the rest parsed again.
"""
import re
import sys

from lxml import etree

MEDIA = {"img", "text", "audio", "video", "ref", "animation", "textstream"}


def parse(data):
    root = etree.fromstring(data, etree.XMLParser(recover=True))
    if root is None:
        rest = re.sub(rb"^(\s|<\?xml[^>]*>|<!DOCTYPE[^>]*>|<!--.*?-->)*", b"", data, flags=re.S)
        if rest != data:
            root = etree.fromstring(rest, etree.XMLParser(recover=True))
    return root


def refs(root):
    out = []
    if root is None:
        return out
    for el in root.iter():
        if not isinstance(el.tag, str) or etree.QName(el).localname.lower() not in MEDIA:
            continue
        for name, value in el.attrib.items():
            if etree.QName(name).localname.lower() == "src":
                out.append(value)
                break
    return out


for path in sys.argv[1:]:
    with open(path, "rb") as f:
        data = f.read()
    sys.stdout.write("file\t%s\n" % path)
    for r in refs(parse(data)):
        sys.stdout.write("ref\t%s\n" % r)
