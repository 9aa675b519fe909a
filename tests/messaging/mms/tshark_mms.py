#!/usr/bin/python3
"""An MMS PDU as Wireshark's MMS dissector (tshark) reads it.

Usage: tshark_mms.py FILE.mms...   Prints tab-separated lines, per file:
  file      PATH
  malformed 0|1        whether tshark marked anything malformed
  type      0x80       X-Mms-Message-Type
  version, tid, from   (when present)
  to / cc / bcc        one line per address
  subject_hex          the octets of the whole Subject header, as hex
  part      CONTENT-TYPE  CONTENT-ID  CONTENT-LOCATION  SIZE   one per multipart entry

tshark has no way to dissect a bare MMS PDU from a file, so the PDU is sent as the body of an
HTTP POST with content type application/vnd.wap.mms-message in a made-up TCP stream (segments
of at most 60000 octets, which tshark reassembles); all files go into one capture, one stream
each, so tshark starts once. tshark shows an encoded-string Subject in
UTF-8 as raw octets, so the subject is given as the header's octets.
"""
import os
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET


def pcap(payloads):
    """One TCP stream per payload (source ports 40000, 40001, ...), in segments tshark joins."""
    out = [struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 1)]
    for k, payload in enumerate(payloads):
        seq = 1
        for i in range(0, len(payload), 60000):
            seg = payload[i:i + 60000]
            tcp = struct.pack(">HHIIBBHHH", 40000 + k, 80, seq, 1, 5 << 4, 0x18, 65535, 0, 0)
            total = 20 + len(tcp) + len(seg)
            ip = struct.pack(">BBHHHBBH4s4s", 0x45, 0, total, 0, 0, 64, 6, 0,
                             bytes([10, 1, 1, 1]), bytes([10, 2, 2, 2]))
            frame = b"\x00\x00\x00\x00\x00\x02" + b"\x00\x00\x00\x00\x00\x01" + b"\x08\x00"
            frame += ip + tcp + seg
            out.append(struct.pack("<IIII", 0, 0, len(frame), len(frame)) + frame)
            seq += len(seg)
    return b"".join(out)


def fields(node, name):
    return [f for f in node.iter("field") if f.get("name") == name]


def first_show(node, name):
    f = fields(node, name)
    return f[0].get("show", "") if f else None


def headers_end(node):
    """Where the last field below `node` ends, payload dissectors left out."""
    last = int(node.get("pos", "0"))
    for child in node:
        if child.tag == "proto":
            continue
        if child.get("pos") is not None:
            last = max(last, int(child.get("pos")) + int(child.get("size", "0")))
        last = max(last, headers_end(child))
    return last


def report(m, malformed):
    print("malformed\t%d" % (1 if malformed or m is None else 0))
    if m is None:
        return
    for key, name in (("type", "mmse.message_type"), ("version", "mmse.mms_version"),
                      ("tid", "mmse.transaction_id"), ("from", "mmse.from")):
        v = first_show(m, name)
        if v is not None:
            print("%s\t%s" % (key, v))
    for key in ("to", "cc", "bcc"):
        for f in fields(m, "mmse." + key):
            print("%s\t%s" % (key, f.get("show", "")))
    for f in fields(m, "mmse.subject"):
        print("subject_hex\t%s" % f.get("value", ""))
    for part in fields(m, "wsp.multipart"):
        ctype = first_show(part, "wsp.header.content_type") or ""
        cid = (first_show(part, "wsp.header.content_id") or "").strip('"')
        loc = first_show(part, "wsp.header.content_location") or ""
        # Headers sent with a textual name show as "Name: value".
        for f in fields(part, "wsp.header_text_value"):
            name = f.get("showname", "").split(":", 1)[0].strip().lower()
            if name == "content-id" and not cid:
                cid = f.get("show", "").strip('"')
            if name == "content-location" and not loc:
                loc = f.get("show", "")
        # The data is what follows the entry's headers up to the entry's end (the size of the
        # dissector the data goes to is not it: the XML one counts UTF-16 text converted).
        end = int(part.get("pos")) + int(part.get("size"))
        size = end - headers_end(part)
        print("part\t%s\t%s\t%s\t%d" % (ctype, cid, loc, size))


def main(paths):
    payloads = []
    for path in paths:
        with open(path, "rb") as f:
            pdu = f.read()
        head = ("POST /mms HTTP/1.1\r\nHost: mmsc.invalid\r\n"
                "Content-Type: application/vnd.wap.mms-message\r\n"
                "Content-Length: %d\r\n\r\n" % len(pdu)).encode()
        payloads.append(head + pdu)
    with tempfile.TemporaryDirectory() as tmp:
        cap = os.path.join(tmp, "p.pcap")
        with open(cap, "wb") as f:
            f.write(pcap(payloads))
        xml = subprocess.run(["tshark", "-r", cap, "-T", "pdml"], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, check=True).stdout
    found = {}  # stream index -> [mmse proto or None, malformed]
    for packet in ET.fromstring(xml).iter("packet"):
        port = first_show(packet, "tcp.srcport")
        if port is None:
            continue
        entry = found.setdefault(int(port) - 40000, [None, False])
        entry[1] = entry[1] or any(e.get("name", "").startswith("_ws.malformed")
                                   for e in packet.iter())
        for p in packet.iter("proto"):
            if p.get("name") == "mmse":
                entry[0] = p
    for k, path in enumerate(paths):
        print("file\t%s" % path)
        m, malformed = found.get(k, [None, True])
        report(m, malformed)


main(sys.argv[1:])
