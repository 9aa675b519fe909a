#!/usr/bin/python3
"""Independent checks of `handset sms` with python3-gammu and tshark.

  sms_oracles.py decode < ENCODED.json        decode what `handset sms encode --json` printed
  sms_oracles.py compare EXPECT.json < ENCODED.json
                                              the same, compared with what the test meant to send;
                                              prints the differences, exit status 1 when any
  sms_oracles.py count TEXTS.json             gammu.SMSCounter for a list of texts

`decode` prints one JSON object:

  {"gammu": {"text": ..., "objects": [...]} | {"error": ...},
   "tshark": {"text": ..., "objects": [...], "formats": [...]} | {"error": ...}}

Objects are {"kind", "number" | "size", "pos"}; positions are UTF-16 units from the start of the
whole message. gammu places objects between the text runs it returns, so an object's position is
the length of the text before it. tshark shows each segment's elements with positions relative to
that segment, so the segment's start is added. gammu is not asked about formatting (it reports
its start and alignment wrongly); tshark is.
"""
import json
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET


def units(s):
    return len(s.encode('utf-16-le')) // 2


def tpdus(doc):
    return [bytes.fromhex(s['pdu'])[1:] for s in doc['segments']]  # drop the SMSC length octet


def gammu_side(doc):
    import gammu
    parts = [gammu.DecodePDU(t, False) for t in tpdus(doc)]
    linked = gammu.LinkSMS([[p] for p in parts])
    if len(linked) != 1:
        return {'error': 'gammu linked %d messages' % len(linked)}
    info = gammu.DecodeSMS(linked[0])
    if info is None:  # a plain single-part message
        return {'text': ''.join(p['Text'] for p in linked[0]), 'objects': []}
    text, objects = '', []
    for e in info['Entries']:
        kind = e['ID']
        # A bitmap entry may carry the text before the picture in its own Buffer.
        if e.get('Buffer') is not None:
            text += e['Buffer']
        if kind == 'EMSPredefinedSound':
            objects.append({'kind': 'sound', 'number': e['Number'], 'pos': units(text)})
        elif kind == 'EMSPredefinedAnimation':
            objects.append({'kind': 'animation', 'number': e['Number'], 'pos': units(text)})
        elif kind in ('EMSFixedBitmap', 'EMSVariableBitmap', 'EMSVariableBitmapLong'):
            size = e['Bitmap'][0]['XPM'][0].decode().split()[:2]
            objects.append({'kind': 'picture', 'size': 'x'.join(size), 'pos': units(text)})
    return {'text': text, 'objects': objects}


def deliver(seg):
    """An SMS-DELIVER TPDU around a segment's user data (tshark cannot tell a SUBMIT's
    direction): originator "123", time 2025-01-11 14:00."""
    t = bytes.fromhex(seg['pdu'])[1:]
    dlen = t[2]
    ud_at = 4 + (dlen + 1) // 2 + 2  # first, MR, DA length, type, digits, PID, DCS
    dcs, udl_ud = t[ud_at - 1], t[ud_at:]
    first = 0x04 | (t[0] & 0x40)
    return bytes([first, 0x03, 0x81, 0x21, 0xF3, 0x00, dcs]) + bytes.fromhex('52101141000000') + udl_ud


IE_KINDS = {'0x0b': 'sound', '0x0d': 'animation', '0x10': 'picture', '0x11': 'picture',
            '0x12': 'picture', '0x0c': 'melody'}
POS_FIELDS = ('gsm_sms.dis_iei_ps.position', 'gsm_sms.dis_iei_pa.position',
              'gsm_sms.dis_iei_lp.position', 'gsm_sms.dis_iei_sp.position',
              'gsm_sms.dis_iei_vp.position', 'gsm_sms.dis_iei_uds.position')


def tshark_side(doc):
    with tempfile.TemporaryDirectory() as tmp:
        dump = os.path.join(tmp, 'h.txt')
        with open(dump, 'w') as f:
            for seg in doc['segments']:  # one packet per segment
                data = deliver(seg)
                for i in range(0, len(data), 16):
                    f.write('%06x ' % i + ' '.join('%02x' % b for b in data[i:i + 16]) + '\n')
        pcap = os.path.join(tmp, 'p.pcap')
        subprocess.run(['text2pcap', '-q', '-l', '147', dump, pcap], check=True,
                       capture_output=True)
        out = subprocess.run(['tshark', '-r', pcap, '-o', 'gsm_sms.reassemble:FALSE', '-o',
                              'uat:user_dlts:"User 0 (DLT=147)","gsm_sms","0","","0",""',
                              '-T', 'pdml'], check=True, capture_output=True).stdout
    text, objects, formats = '', [], []
    for packet in ET.fromstring(out).iter('packet'):
        start, iei, seg_text = units(text), None, ''
        fmt = {}
        for f in packet.iter('field'):
            name, show = f.get('name'), f.get('show')
            if name == 'gsm_sms.ie_identifier':
                iei = show
            elif name in POS_FIELDS and iei in IE_KINDS:
                objects.append({'kind': IE_KINDS[iei], 'iei': iei, 'pos': start + int(show)})
            elif name == 'gsm_sms.dis_iei_ps.sound_number':
                objects[-1]['number'] = int(show)
            elif name == 'gsm_sms.dis_iei_pa.animation_number':
                objects[-1]['number'] = int(show)
            elif name == 'gsm_sms.dis_iei_tf.start_position':
                fmt = {'start': start + int(show)}
                formats.append(fmt)
            elif name == 'gsm_sms.dis_iei_tf.length':
                fmt['length'] = int(show)
            elif name == 'gsm_sms.formatting_mode':
                fmt['mode'] = int(show, 0)
            elif name == 'gsm_sms.sms_text':
                seg_text = show
        text += seg_text
    return {'text': text, 'objects': objects, 'formats': formats}


def same_objects(a, b, keys):
    pick = lambda objs: sorted((o['pos'], o['kind'], str([o.get(k) for k in keys])) for o in objs)
    return pick(a) == pick(b)


def merged(formats):
    """Formatting ranges cut at segment ends, joined again."""
    out = []
    for f in sorted(formats, key=lambda f: f['start']):
        if out and out[-1]['mode'] == f['mode'] and out[-1]['start'] + out[-1]['length'] == f['start']:
            out[-1]['length'] += f['length']
        else:
            out.append(dict(f))
    return out


def compare(expect, got):
    diffs = []
    for name in ('gammu', 'tshark'):
        g = got[name]
        if 'error' in g:
            diffs.append('%s failed: %s' % (name, g['error']))
            continue
        # tshark shows line breaks as blanks.
        want_text = expect['text'].replace('\n', ' ') if name == 'tshark' else expect['text']
        if g['text'] != want_text:
            diffs.append('%s text %r, expected %r' % (name, g['text'], want_text))
        # gammu does not turn user melodies back into entries: they are left out for it.
        want = [o for o in expect['objects'] if name == 'tshark' or o['kind'] != 'melody']
        keys = ('number',) if name == 'tshark' else ('number', 'size')
        if not same_objects(g['objects'], want, keys):
            diffs.append('%s objects %s, expected %s' % (name, g['objects'], want))
        if name == 'tshark' and merged(g['formats']) != merged(expect['formats']):
            diffs.append('tshark formats %s, expected %s' % (g['formats'], expect['formats']))
    return diffs


def count(texts):
    import gammu
    out = []
    for text, unicode in texts:
        coding = 'Unicode' if unicode else 'Default'
        parts, left = gammu.SMSCounter(text, 'NoUDH', coding)
        if parts > 1:  # several parts carry a concatenation element
            parts, left = gammu.SMSCounter(text, 'ConcatenatedMessages', coding)
        out.append({'segments': parts, 'left': left})
    return out


def main():
    mode = sys.argv[1] if len(sys.argv) > 1 else 'decode'
    if mode == 'count':
        with open(sys.argv[2], encoding='utf-8') as f:
            print(json.dumps(count(json.load(f)), separators=(',', ':')))
        return
    doc = json.load(sys.stdin)
    res = {}
    for name, fn in (('gammu', gammu_side), ('tshark', tshark_side)):
        try:
            res[name] = fn(doc)
        except Exception as e:  # reported, so the test can say what failed
            res[name] = {'error': '%s: %s' % (type(e).__name__, e)}
    if mode == 'compare':
        with open(sys.argv[2], encoding='utf-8') as f:
            diffs = compare(json.load(f), res)
        for d in diffs:
            print(d)
        sys.exit(1 if diffs else 0)
    print(json.dumps(res, ensure_ascii=False))


if __name__ == '__main__':
    main()
