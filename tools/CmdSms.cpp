#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "handset/messaging.h"
#include "tools/Cli.h"
#include "tools/SmsDecode.h"

namespace {

const char kUsage[] =
    "usage: handset sms count [--encoding auto|gsm7|ucs2] [--json] TEXT|-\n"
    "       handset sms encode [--text T|-] [--sound N[@POS]] [--animation N[@POS]]\n"
    "                          [--melody F.imy[@POS]] [--picture F.pbm[@POS]]\n"
    "                          [--format START,LEN,STYLE[,COLOR]] [--encoding auto|gsm7|ucs2]\n"
    "                          [--to NUMBER] [--ref N] [--class 0-3] [--json]\n"
    "       handset sms decode [--json] [--extract DIR] HEX...|FILE...|-\n\n"
    "count   what sending TEXT takes: the coding, its septets (GSM 7-bit) or UTF-16 units\n"
    "        (UCS-2), the segments and what is left in the last one. \"-\" reads standard\n"
    "        input (one trailing line break dropped).\n"
    "encode  builds the message and prints each segment as an SMS-SUBMIT in the AT+CMGS PDU\n"
    "        form (\"00\" for the phone's own service centre, then the TPDU), one per line,\n"
    "        each after a \"# AT+CMGS=LENGTH\" line. Options may repeat:\n"
    "  --sound N, --animation N   predefined sound or animation N\n"
    "  --melody F.imy             an iMelody file (at most 254 bytes)\n"
    "  --picture F.pbm            a portable bitmap (P1 or P4), at least 8 pixels wide\n"
    "  @POS                       the character position in the text (default: its end)\n"
    "  --format START,LEN,STYLE[,COLOR]  text formatting; STYLE is a number or names joined\n"
    "                             by '+': left center right large small bold italic\n"
    "                             underline strike; COLOR is the colour octet (default 9)\n"
    "  --ref N                    concatenation reference 0-255 (default: from the content)\n"
    "  --class 0-3                message class (default: none)\n"
    "decode  reads PDU-mode lines (hex, with or without the service-centre part; lines\n"
    "        starting with '#' are skipped) of SMS-DELIVER, SMS-SUBMIT and SMS-STATUS-REPORT,\n"
    "        reassembles concatenated messages (\"{...}\" marks a missing part) and prints\n"
    "        each message with its items. --extract DIR saves melodies as .imy and pictures\n"
    "        as .pbm files. A bad line is reported and the others still decoded; the exit\n"
    "        status is then 1.\n\n"
    "example: handset sms encode --text 'Hi there' --sound 3@3 --to +4915551234\n"
    "         handset sms encode --text hello | handset sms decode -\n";

int Run(const std::vector<std::string>& argv);
const hs::cli::Command kCommand{"sms", "count, encode and decode short messages with EMS items",
                                kUsage, Run};
hs::cli::Registrar reg(kCommand);

bool ParseInt(const std::string& s, int lo, int hi, int* out) {
  if (s.empty() || s.size() > 9) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  int v = std::atoi(s.c_str());
  if (v < lo || v > hi) return false;
  *out = v;
  return true;
}

bool ParseEncoding(const std::string& s, ME_SMS_ENCODE* enc) {
  if (s == "auto") return *enc = SMS_ENC_AUTO, true;
  if (s == "gsm7") return *enc = SMS_ENC_GSM7, true;
  if (s == "ucs2") return *enc = SMS_ENC_UCS2, true;
  return false;
}

bool ReadText(const std::string& arg, std::string* text) {
  if (arg != "-") return *text = arg, true;
  std::vector<uint8_t> in;
  if (!hs::cli::ReadInput("-", &in)) return false;
  text->assign(in.begin(), in.end());
  if (!text->empty() && text->back() == '\n') text->pop_back();
  if (!text->empty() && text->back() == '\r') text->pop_back();
  return true;
}

// UTF-16 units of a UTF-8 text, and the byte offset of unit `units` (moved past a pair it
// would cut).
size_t Utf16Units(const std::string& s) {
  size_t n = 0;
  for (unsigned char c : s) n += (c & 0xC0) != 0x80 ? (c >= 0xF0 ? 2 : 1) : 0;
  return n;
}

size_t ByteOffset(const std::string& s, size_t units) {
  size_t i = 0, n = 0;
  while (i < s.size() && n < units) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    n += c >= 0xF0 ? 2 : 1;
    ++i;
    while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) ++i;
  }
  return i;
}

// An option value "VALUE[@POS]": the value and the position (-1 when not given).
bool SplitAt(const std::string& v, std::string* value, int* pos) {
  size_t at = v.rfind('@');
  *pos = -1;
  *value = v;
  if (at == std::string::npos) return true;
  *value = v.substr(0, at);
  return ParseInt(v.substr(at + 1), 0, 100000, pos);
}

int StyleBits(const std::string& style) {
  int n = 0;
  if (ParseInt(style, 0, 255, &n)) return n;
  static const struct {
    const char* name;
    int set, mask;
  } kNames[] = {{"left", 0, 3},        {"center", 1, 3},    {"centre", 1, 3}, {"right", 2, 3},
                {"large", 4, 12},      {"small", 8, 12},    {"bold", 16, 16}, {"italic", 32, 32},
                {"underline", 64, 64}, {"strike", 128, 128}};
  int bits = 3;  // language-dependent alignment unless one is named
  size_t at = 0;
  while (at <= style.size()) {
    size_t plus = style.find('+', at);
    std::string word = style.substr(at, plus == std::string::npos ? std::string::npos : plus - at);
    bool known = false;
    for (const auto& k : kNames)
      if (word == k.name) bits = (bits & ~k.mask) | k.set, known = true;
    if (!known) return -1;
    if (plus == std::string::npos) break;
    at = plus + 1;
  }
  return bits;
}

struct Placed {
  int pos;
  CSmMedia* item;
};

// Reads the EMS options into items at text positions; false (with a message) on bad input.
bool CollectObjects(const hs::cli::Args& a, size_t textUnits, std::vector<Placed>* objs,
                    int* status) {
  auto place = [&](const std::string& opt, const std::string& raw, std::string* value) {
    int pos = -1;
    if (!SplitAt(raw, value, &pos) || pos > static_cast<int>(textUnits)) {
      hs::cli::Fail(opt + " " + raw, "the position must be 0.." + std::to_string(textUnits));
      *status = 2;
      return -2;
    }
    return pos < 0 ? static_cast<int>(textUnits) : pos;
  };
  std::string v;
  int n = 0;
  for (const char* opt : {"--sound", "--animation"})
    for (const std::string& raw : a.GetAll(opt)) {
      int pos = place(opt, raw, &v);
      if (pos < 0) return false;
      if (!ParseInt(v, 0, 255, &n)) {
        hs::cli::Fail(std::string(opt) + " " + raw, "needs a number 0-255");
        return *status = 2, false;
      }
      CSmMedia* m = std::string(opt) == "--sound" ? static_cast<CSmMedia*>(new CSmSound(n))
                                                  : new CSmAnimation(n);
      objs->push_back({pos, m});
    }
  for (const std::string& raw : a.GetAll("--melody")) {
    int pos = place("--melody", raw, &v);
    std::vector<uint8_t> bytes;
    if (pos < 0) return false;
    if (!hs::cli::ReadInput(v, &bytes)) return *status = 1, false;
    std::string text(bytes.begin(), bytes.end());
    if (!CSmSound::IsValidIMelodyFormat(text.c_str()) || text.size() > 254) {
      hs::cli::Fail(v, text.size() > 254 ? "melody above 254 bytes does not fit an element"
                                         : "not iMelody (BEGIN:IMELODY, MELODY:, END:IMELODY)");
      return *status = 1, false;
    }
    CSmSound* s = new CSmSound(-1);
    s->SetData(text.c_str());
    objs->push_back({pos, s});
  }
  for (const std::string& raw : a.GetAll("--picture")) {
    int pos = place("--picture", raw, &v);
    std::vector<uint8_t> bytes;
    if (pos < 0) return false;
    if (!hs::cli::ReadInput(v, &bytes)) return *status = 1, false;
    CBmpWrp bmp;
    std::string err;
    if (!bmp.LoadPbm(bytes.data(), bytes.size(), &err) || bmp.GetWidth() < 8) {
      hs::cli::Fail(v, err.empty() ? "a picture must be at least 8 pixels wide" : err);
      return *status = 1, false;
    }
    CSmPicture* p = new CSmPicture;
    p->SetData(bmp);
    objs->push_back({pos, p});
  }
  std::stable_sort(objs->begin(), objs->end(),
                   [](const Placed& x, const Placed& y) { return x.pos < y.pos; });
  return true;
}

bool AddFormats(const hs::cli::Args& a, size_t textUnits, const std::vector<Placed>& objs,
                CSmContent* content) {
  for (const std::string& f : a.GetAll("--format")) {
    std::vector<std::string> parts;
    size_t at = 0;
    for (size_t comma; (comma = f.find(',', at)) != std::string::npos; at = comma + 1)
      parts.push_back(f.substr(at, comma - at));
    parts.push_back(f.substr(at));
    int start = 0, len = 0, color = 9, style = parts.size() >= 3 ? StyleBits(parts[2]) : -1;
    if (parts.size() < 3 || parts.size() > 4 ||
        !ParseInt(parts[0], 0, static_cast<int>(textUnits), &start) ||
        !ParseInt(parts[1], 0, 255, &len) || style < 0 ||
        (parts.size() == 4 && !ParseInt(parts[3], 0, 255, &color))) {
      hs::cli::Fail("--format " + f, "needs START,LEN,STYLE[,COLOR] within the text");
      return false;
    }
    CSmTextFormat* t = new CSmTextFormat;
    int before = 0;  // objects anchored at or before the first formatted character
    for (const Placed& o : objs) before += o.pos <= start ? 1 : 0;
    t->SetPosition(start + before);
    t->m_nEffectLen = len;
    t->m_cFormat = static_cast<unsigned char>(style);
    t->m_cColor = static_cast<unsigned char>(color);
    content->AddItem(t, false, false);
  }
  return true;
}

std::string SegmentText(const SM_UD_SEGMENT& s, std::vector<uint8_t>* header) {
  CSmUserData ud;
  ud.Decode(s.nDcs, s.bUdhi, s.nUdl, s.abUd, s.nLength);
  *header = ud.GetHeader();
  return ud.GetText();
}

int Encode(const hs::cli::Args& a) {
  ME_SMS_ENCODE enc = SMS_ENC_AUTO;
  int ref = -1, cls = -1, status = 0;
  if (!ParseEncoding(a.Get("--encoding", "auto"), &enc) ||
      (a.Has("--ref") && !ParseInt(a.Get("--ref"), 0, 255, &ref)) ||
      (a.Has("--class") && !ParseInt(a.Get("--class"), 0, 3, &cls))) {
    hs::cli::Fail("sms encode", "--encoding auto|gsm7|ucs2, --ref 0-255, --class 0-3");
    return 2;
  }
  std::string text;
  if (a.Has("--text") && !ReadText(a.Get("--text"), &text)) return 1;
  CSmContext ctx;
  CSmContent* content = ctx.GetContent();
  std::vector<Placed> objs;
  size_t units = Utf16Units(text);
  if (!CollectObjects(a, units, &objs, &status)) {
    for (Placed& o : objs) delete o.item;
    return status;
  }
  size_t cursor = 0;
  for (Placed& o : objs) {
    size_t to = ByteOffset(text, static_cast<size_t>(o.pos));
    if (to > cursor)
      content->AddItem(new CSmText(text.substr(cursor, to - cursor).c_str()), false, true);
    cursor = std::max(cursor, to);
    content->AddItem(o.item, false, true);
  }
  if (cursor < text.size()) content->AddItem(new CSmText(text.substr(cursor).c_str()), false, true);
  if (!AddFormats(a, units, objs, content)) return 2;
  if (cls >= 0)
    ctx.m_eClass = static_cast<ESmClass>(cls == 0   ? SMCLASS_0
                                         : cls == 1 ? SMCLASS_1
                                         : cls == 2 ? SMCLASS_2
                                                    : SMCLASS_3);
  if (ref < 0) {  // a reference that differs between messages yet stays the same for one message
    uint32_t h = 2166136261u;
    for (unsigned char c : text + a.Get("--melody") + a.Get("--picture")) h = (h ^ c) * 16777619u;
    ref = static_cast<int>(h & 0xFF);
  }
  std::vector<SM_UD_SEGMENT> segs;
  if (ctx.EncodeUserDataPdu(ref, &segs, enc) == 0) {
    hs::cli::FailCode("sms encode", HS_RESULT_SMS, ctx.GetEncodeError());
    return 1;
  }
  std::string to = a.Get("--to");
  hs::cli::Json j;
  bool json = a.Has("--json");
  bool ucs2 = (segs[0].nDcs & 0x0C) == 0x08;
  j.BeginObject().Key("encoding").String(ucs2 ? "ucs2" : "gsm7").Key("reference").Int(ref);
  j.Key("segments").BeginArray();
  for (const SM_UD_SEGMENT& s : segs) {
    int length = 0;
    std::vector<uint8_t> pdu = CSmPdu::BuildSubmit(to.c_str(), 0, s, &length);
    if (pdu.empty()) {
      hs::cli::Fail(to, "destination number with more than 20 digits");
      return 2;
    }
    std::string hex = hs::cli::sms::Hex(pdu.data(), pdu.size(), true);
    if (!json) {
      std::printf("# AT+CMGS=%d\n%s\n", length, hex.c_str());
      continue;
    }
    std::vector<uint8_t> header;
    std::string segText = SegmentText(s, &header);
    j.BeginObject().Key("tpdu_length").Int(length).Key("pdu").String(hex);
    j.Key("dcs").Int(s.nDcs).Key("udl").Int(s.nUdl);
    j.Key("udh").String(hs::cli::sms::Hex(header.data(), header.size(), true)).Key("ies");
    hs::cli::sms::IesJson(header, j);
    j.Key("text").String(hs::cli::sms::CleanUtf8(segText)).EndObject();
  }
  j.EndArray().EndObject();
  if (json) std::printf("%s\n", j.Str().c_str());
  return 0;
}

int Count(const hs::cli::Args& a) {
  ME_SMS_ENCODE enc = SMS_ENC_AUTO;
  if (a.Positional().size() != 2 || !ParseEncoding(a.Get("--encoding", "auto"), &enc)) {
    hs::cli::Fail("sms count", "needs one TEXT (or -) and --encoding auto|gsm7|ucs2");
    return 2;
  }
  std::string text;
  if (!ReadText(a.Positional()[1], &text)) return 1;
  CSmContext ctx;
  CSmText item(text.c_str());
  ctx.GetContent()->AddItem(&item, true, true);  // a clone; an empty text is not added
  std::vector<SM_UD_SEGMENT> segs;
  if (ctx.EncodeUserDataPdu(0, &segs, enc) == 0) {
    hs::cli::FailCode("sms count", HS_RESULT_SMS, ctx.GetEncodeError());
    return 1;
  }
  bool ucs2 = (segs[0].nDcs & 0x0C) == 0x08;
  int used = 0, left = 0;
  for (const SM_UD_SEGMENT& s : segs) {
    int header = s.bUdhi ? s.abUd[0] + 1 : 0;
    used += ucs2 ? (s.nUdl - header) / 2 : s.nUdl - (header * 8 + 6) / 7;
    left = ucs2 ? (140 - s.nUdl) / 2 : 160 - s.nUdl;
  }
  const char* unit = ucs2 ? "units" : "septets";
  if (a.Has("--json")) {
    hs::cli::Json j;
    j.BeginObject().Key("encoding").String(ucs2 ? "ucs2" : "gsm7").Key(unit).Int(used);
    j.Key("segments").Int(static_cast<long long>(segs.size())).Key("left").Int(left).EndObject();
    std::printf("%s\n", j.Str().c_str());
  } else {
    std::printf("encoding: %s\n%s: %d\nsegments: %zu\nleft: %d\n", ucs2 ? "ucs2" : "gsm7", unit,
                used, segs.size(), left);
  }
  return 0;
}

int Run(const std::vector<std::string>& argv) {
  hs::cli::Args a(argv, {"--encoding", "--text", "--melody", "--sound", "--animation", "--picture",
                         "--format", "--to", "--ref", "--class", "--extract"});
  int rc = hs::cli::CommonChecks(kCommand, a, {"--json"}, 1, 1000);
  if (rc >= 0) return rc;
  const std::string& action = a.Positional()[0];
  if (action == "count") return Count(a);
  if (action == "encode") {
    if (a.Positional().size() != 1) {
      hs::cli::Fail("sms encode", "takes no positional arguments (use --text)");
      return 2;
    }
    return Encode(a);
  }
  if (action == "decode") return hs::cli::sms::Decode(a);
  hs::cli::Fail(action, "unknown action (count, encode or decode)");
  return 2;
}

}  // namespace
