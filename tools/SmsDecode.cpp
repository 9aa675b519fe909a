#include "tools/SmsDecode.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>

namespace hs {
namespace cli {
namespace sms {

std::string Hex(const uint8_t* p, size_t n, bool upper) {
  const char* d = upper ? "0123456789ABCDEF" : "0123456789abcdef";
  std::string s;
  for (size_t i = 0; i < n; ++i) s += {d[p[i] >> 4], d[p[i] & 15]};
  return s;
}

std::string CleanUtf8(const std::string& s) {
  std::string out;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(s.data());
  size_t n = s.size(), i = 0;
  while (i < n) {
    unsigned c = p[i];
    int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
    bool ok = extra >= 0 && i + static_cast<size_t>(extra) < n;
    uint32_t cp = extra == 0 ? c : c & (0x3Fu >> extra);
    for (int k = 1; ok && k <= extra; ++k) {
      ok = (p[i + k] & 0xC0) == 0x80;
      cp = (cp << 6) | (p[i + k] & 0x3F);
    }
    if (ok && extra > 0)
      ok = !((extra == 1 && cp < 0x80) || (extra == 2 && cp < 0x800) ||
             (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) || (cp >= 0xD800 && cp <= 0xDFFF));
    if (!ok) {
      out += "\xEF\xBF\xBD";
      ++i;
      continue;
    }
    out.append(s, i, static_cast<size_t>(extra) + 1);
    i += static_cast<size_t>(extra) + 1;
  }
  return out;
}

void IesJson(const std::vector<uint8_t>& header, Json& j) {
  j.BeginArray();
  for (size_t i = 1; header.size() >= 1 && i + 1 < header.size() && i < 1u + header[0];) {
    size_t len = header[i + 1];
    if (i + 2 + len > header.size()) break;
    j.BeginObject().Key("iei").Int(header[i]).Key("length").Int(static_cast<long long>(len));
    j.Key("data").String(Hex(header.data() + i + 2, len)).EndObject();
    i += 2 + len;
  }
  j.EndArray();
}

namespace {

const char* TypeName(ESmPduType t) {
  return t == SMPDU_DELIVER  ? "SMS-DELIVER"
         : t == SMPDU_SUBMIT ? "SMS-SUBMIT"
                             : "SMS-STATUS-REPORT";
}

const char* CodingName(ESmAlphabet a) {
  return a == SMALPHA_GSM7 ? "gsm7" : a == SMALPHA_UCS2 ? "ucs2" : "8bit";
}

std::string TimeText(const ME_CAL_DATE& d, int tzQuarters) {
  char b[64];
  int tz = tzQuarters < 0 ? -tzQuarters : tzQuarters;
  std::snprintf(b, sizeof b, "%04d-%02d-%02d %02d:%02d:%02d %c%02d:%02d", d.nYear, d.nMonth, d.nDay,
                d.nHour, d.nMinute, d.nSecond, tzQuarters < 0 ? '-' : '+', tz / 4, tz % 4 * 15);
  return b;
}

std::string StatusText(int st) {
  if (st == 0) return "received by the recipient";
  if (st == 1) return "forwarded, delivery unconfirmed";
  if (st == 2) return "replaced by the service centre";
  if (st >= 0x20 && st < 0x40) return "temporary error, still trying";
  if (st >= 0x40 && st < 0x60) return "permanent error, not delivered";
  if (st >= 0x60 && st < 0x80) return "temporary error, no longer trying";
  return "reserved status";
}

std::string FormatText(const CSmTextFormat& f) {
  static const char* kAlign[] = {"left", "center", "right", "default alignment"};
  std::string s = kAlign[f.m_cFormat & 3];
  int size = (f.m_cFormat >> 2) & 3;
  if (size == 1) s += ", large";
  if (size == 2) s += ", small";
  if (f.m_cFormat & 0x10) s += ", bold";
  if (f.m_cFormat & 0x20) s += ", italic";
  if (f.m_cFormat & 0x40) s += ", underlined";
  if (f.m_cFormat & 0x80) s += ", strikethrough";
  return s;
}

std::vector<std::string> Drawing(const CBmpWrp& b) {
  std::vector<std::string> rows;
  for (int y = 0; y < b.GetHeight(); ++y) {
    std::string r;
    for (int x = 0; x < b.GetWidth(); ++x) r += b.GetPixel(x, y) ? '#' : '.';
    rows.push_back(r);
  }
  return rows;
}

// The four frames of a user animation, one bitmap each.
std::vector<CBmpWrp> Frames(CSmAnimation* m) {
  std::vector<CBmpWrp> frames;
  int n = m->m_nRawSize;
  int side = n == 128 ? 16 : n == 32 ? 8 : 0;
  const uint8_t* p = static_cast<const uint8_t*>(m->m_pvRawData);
  for (int f = 0; side && p && f < 4; ++f) {
    CBmpWrp b;
    b.SetRows(side, side, side / 8, p + f * side * side / 8, static_cast<size_t>(side * side / 8));
    frames.push_back(b);
  }
  return frames;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> out;
  size_t at = 0;
  while (at <= text.size()) {
    size_t nl = text.find('\n', at);
    std::string line = text.substr(at, nl == std::string::npos ? std::string::npos : nl - at);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() || nl != std::string::npos) out.push_back(line);
    if (nl == std::string::npos) break;
    at = nl + 1;
  }
  return out;
}

struct Message {
  std::vector<std::string> sources;  // where each part came from
  CSmPdu pdu;                        // the first part
  ESmAlphabet alphabet = SMALPHA_GSM7;
  bool concat = false;
  int ref = 0, total = 1;
  std::unique_ptr<CSmAssemble> assemble;
  CSmContext ctx;
  std::vector<std::string> notes;
  std::map<int, std::vector<uint8_t>> data;  // 8-bit parts that are not text, by sequence
};

// One item of a decoded message: its description for people and for JSON; saved with --extract.
struct ItemView {
  std::string kind, text;
  int position = 0;
  std::vector<std::string> rows;
  std::string file;
};

// What an item is, with its drawing or text lines; `save`/`bytes` say what --extract writes.
void DescribeSound(CSmSound* s, ItemView* v, std::string* save, std::vector<uint8_t>* bytes) {
  if (s->IsPredefSound()) {
    v->kind = "sound";
    v->text = "predefined " + std::to_string(s->m_nSoundIdx);
    return;
  }
  v->kind = "melody";
  const char* t = static_cast<const char*>(s->GetData());
  std::string melody = t ? std::string(t, static_cast<size_t>(s->GetLength())) : "";
  v->rows = Lines(melody);
  v->text = std::to_string(melody.size()) + " bytes of iMelody";
  bytes->assign(melody.begin(), melody.end());
  *save = "melody.imy";
}

void DescribeAnimation(CSmAnimation* a, ItemView* v) {
  v->kind = "animation";
  if (a->IsPredefAnimation()) {
    v->text = "predefined " + std::to_string(a->m_nAnmIdx);
    return;
  }
  std::vector<CBmpWrp> frames = Frames(a);
  v->text = std::to_string(frames.size()) + " frames";
  if (!frames.empty())
    v->text +=
        " of " + std::to_string(frames[0].GetWidth()) + "x" + std::to_string(frames[0].GetHeight());
  for (const CBmpWrp& f : frames) {
    for (const std::string& r : Drawing(f)) v->rows.push_back(r);
    v->rows.push_back("");
  }
  if (!v->rows.empty()) v->rows.pop_back();
}

ItemView Describe(const CSmContent& c, CSmMedia* m, const std::string& extractDir,
                  const std::string& stem, int* counter) {
  ItemView v;
  v.position = c.GetTextPosition(m->GetPosition());
  std::string save;
  std::vector<uint8_t> bytes;
  CBmpWrp b;
  switch (m->GetType()) {
    case SMOBJ_TEXTFORMAT: {
      CSmTextFormat* f = static_cast<CSmTextFormat*>(m);
      v.kind = "format";
      v.text = std::to_string(f->m_nEffectLen) + " characters, " + FormatText(*f) + ", colour " +
               std::to_string(f->m_cColor);
      break;
    }
    case SMOBJ_PREDEF_SOUND:
    case SMOBJ_USER_MELODY:
      DescribeSound(static_cast<CSmSound*>(m), &v, &save, &bytes);
      break;
    case SMOBJ_PICTURE:
      v.kind = "picture";
      if (static_cast<CSmPicture*>(m)->GetBitmap(&b)) {
        v.text = std::to_string(b.GetWidth()) + "x" + std::to_string(b.GetHeight());
        v.rows = Drawing(b);
        bytes = b.SavePbm();
        save = "picture.pbm";
      }
      break;
    case SMOBJ_ANIMATION:
      DescribeAnimation(static_cast<CSmAnimation*>(m), &v);
      break;
    default: {
      v.kind = "data";
      const uint8_t* p = static_cast<const uint8_t*>(m->GetData());
      int n = m->GetLength();
      v.text = std::to_string(n) + " octets: " + Hex(p, static_cast<size_t>(n > 64 ? 64 : n)) +
               (n > 64 ? "..." : "");
      break;
    }
  }
  if (!extractDir.empty() && !save.empty()) {
    v.file = extractDir + "/" + stem + "-" + std::to_string(++*counter) + "-" + save;
    if (!WriteOutput(v.file, bytes.data(), bytes.size())) v.file.clear();
  }
  return v;
}

void MessageJson(const Message& m, const std::string& text, const std::vector<ItemView>& items,
                 Json& j) {
  const CSmPdu& p = m.pdu;
  j.BeginObject().Key("type").String(TypeName(p.m_eType));
  j.Key("sources").BeginArray();
  for (const std::string& s : m.sources) j.String(CleanUtf8(s));
  j.EndArray();
  j.Key(p.m_eType == SMPDU_DELIVER  ? "from"
        : p.m_eType == SMPDU_SUBMIT ? "to"
                                    : "recipient")
      .String(CleanUtf8(p.m_strAddress));
  if (!p.m_strSmsc.empty()) j.Key("smsc").String(CleanUtf8(p.m_strSmsc));
  if (p.m_bHasTime) j.Key("time").String(TimeText(p.m_calTime, p.m_nTzQuarters));
  if (p.m_eType == SMPDU_STATUS_REPORT)
    j.Key("discharged")
        .String(TimeText(p.m_calDischarge, p.m_nDischargeTz))
        .Key("status")
        .Int(p.m_nStatus);
  j.Key("coding").String(CodingName(m.alphabet)).Key("dcs").Int(p.m_nDcs);
  if (m.concat)
    j.Key("reference")
        .Int(m.ref)
        .Key("parts")
        .Int(m.total)
        .Key("received")
        .Int(m.assemble ? m.assemble->GetReceived() : 1);
  j.Key("text").String(CleanUtf8(text)).Key("items").BeginArray();
  for (const ItemView& v : items) {
    j.BeginObject().Key("kind").String(v.kind).Key("position").Int(v.position);
    j.Key("detail").String(CleanUtf8(v.text));
    if (!v.rows.empty()) {
      j.Key("lines").BeginArray();
      for (const std::string& r : v.rows) j.String(CleanUtf8(r));
      j.EndArray();
    }
    if (!v.file.empty()) j.Key("file").String(CleanUtf8(v.file));
    j.EndObject();
  }
  j.EndArray().Key("notes").BeginArray();
  for (const std::string& s : m.notes) j.String(CleanUtf8(s));
  j.EndArray().EndObject();
}

void PrintMessage(int n, Message& m, const std::string& extractDir, bool json, Json& j) {
  const CSmPdu& p = m.pdu;
  CSmText full("");
  const CSmContent& content = *m.ctx.GetContent();
  content.GetFullText(&full);
  std::string text = static_cast<char*>(full);
  std::vector<ItemView> items;
  int counter = 0;
  for (CSmMedia* item : content.GetList())
    if (item->GetType() != SMOBJ_TEXT)
      items.push_back(Describe(content, item, extractDir, "message" + std::to_string(n), &counter));
  if (json) return MessageJson(m, text, items, j);
  std::printf("message %d (%s)\n", n, m.sources[0].c_str());
  std::printf("  type: %s\n", TypeName(p.m_eType));
  std::printf("  %s: %s\n",
              p.m_eType == SMPDU_DELIVER  ? "from"
              : p.m_eType == SMPDU_SUBMIT ? "to"
                                          : "recipient",
              p.m_strAddress.c_str());
  if (!p.m_strSmsc.empty()) std::printf("  smsc: %s\n", p.m_strSmsc.c_str());
  if (p.m_bHasTime) std::printf("  time: %s\n", TimeText(p.m_calTime, p.m_nTzQuarters).c_str());
  if (p.m_eType == SMPDU_STATUS_REPORT) {
    std::printf("  discharged: %s\n", TimeText(p.m_calDischarge, p.m_nDischargeTz).c_str());
    std::printf("  status: %d (%s)\n", p.m_nStatus, StatusText(p.m_nStatus).c_str());
  }
  std::printf("  coding: %s (DCS %02X)\n", CodingName(m.alphabet), p.m_nDcs);
  if (m.concat)
    std::printf("  parts: %d of %d received, reference %d\n",
                m.assemble ? m.assemble->GetReceived() : 1, m.total, m.ref);
  for (size_t i = 1; i < m.sources.size(); ++i)
    std::printf("  part from: %s\n", m.sources[i].c_str());
  std::printf("  text: %s\n", text.c_str());
  for (const ItemView& v : items) {
    std::printf("  %s at %d: %s\n", v.kind.c_str(), v.position, v.text.c_str());
    for (const std::string& r : v.rows) std::printf("    %s\n", r.c_str());
    if (!v.file.empty()) std::printf("    saved: %s\n", v.file.c_str());
  }
  for (const std::string& s : m.notes) std::printf("  note: %s\n", s.c_str());
}

bool IsHexArgument(const std::string& s) {
  if (s.size() < 2) return false;
  for (char c : s)
    if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
  std::error_code ec;
  return !std::filesystem::exists(s, ec);  // a file of that name wins
}

// The lines to decode, each with the place it came from.
bool CollectLines(const std::vector<std::string>& args,
                  std::vector<std::pair<std::string, std::string>>* lines) {
  bool ok = true;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (IsHexArgument(a)) {
      lines->push_back({"argument " + std::to_string(i + 1), a});
      continue;
    }
    std::vector<uint8_t> bytes;
    if (!ReadInput(a, &bytes)) {
      ok = false;
      continue;
    }
    std::string text(bytes.begin(), bytes.end()), label = a == "-" ? "<stdin>" : a;
    int n = 0;
    for (const std::string& l : Lines(text)) {
      ++n;
      size_t b = l.find_first_not_of(" \t");
      if (b == std::string::npos || l[b] == '#') continue;
      lines->push_back({label + ":" + std::to_string(n), l});
    }
  }
  return ok;
}

}  // namespace

int Decode(const Args& a) {
  std::vector<std::string> inputs(a.Positional().begin() + 1, a.Positional().end());
  if (inputs.empty()) inputs.push_back("-");
  bool json = a.Has("--json");
  std::string extract = a.Get("--extract");
  std::vector<std::pair<std::string, std::string>> lines;
  int status = CollectLines(inputs, &lines) ? 0 : 1;
  std::vector<std::unique_ptr<Message>> messages;
  std::map<std::string, Message*> groups;
  Json errors;
  errors.BeginArray();
  for (const auto& line : lines) {
    CSmPdu pdu;
    CSmUserData ud;
    CString detail;
    int rc = pdu.ParseHex(line.second.c_str(), &detail);
    if (rc == 0 && pdu.m_bHasUd && (rc = pdu.DecodeUserData(&ud)) != 0)
      detail = HsResultText(HS_RESULT_SMS, rc);
    if (rc != 0) {
      Fail(line.first, "decode: " + detail);
      errors.BeginObject()
          .Key("source")
          .String(CleanUtf8(line.first))
          .Key("error")
          .String(CleanUtf8(detail))
          .EndObject();
      status = 1;
      continue;
    }
    int ref = 0, total = 1, seq = 1;
    bool concat = ud.GetConcat(&ref, &total, &seq);
    std::string key = std::to_string(pdu.m_eType) + "/" + pdu.m_strAddress + "/" +
                      std::to_string(ref) + "/" + std::to_string(total);
    Message* m = concat && groups.count(key) ? groups[key] : nullptr;
    if (m && !m->assemble->CanAddPart(ref, seq, total)) m = nullptr;  // a repeated part
    if (!m) {
      messages.emplace_back(new Message);
      m = messages.back().get();
      m->pdu = pdu;
      m->alphabet = ud.GetAlphabet();
      m->concat = concat;
      m->ref = ref;
      m->total = total;
      if (concat && total >= 1 && total <= SM_MAX_PARTS) {
        m->assemble.reset(new CSmAssemble);
        m->assemble->SetTarget(ref, total, &m->ctx);
        groups[key] = m;
      } else if (concat) {
        m->notes.push_back("part " + std::to_string(seq) + " of " + std::to_string(total) +
                           ": not reassembled");
      }
    }
    m->sources.push_back(line.first);
    if (pdu.m_nExtraOctets)
      m->notes.push_back(line.first + ": " + std::to_string(pdu.m_nExtraOctets) +
                         " octets after the user data ignored");
    if (m->assemble && m->assemble->CanAddPart(ref, seq, total)) {
      m->assemble->AddPart(seq, ud.GetText().c_str(), ud.GetUd140().data(), false);
      if (ud.GetAlphabet() == SMALPHA_8BIT && ud.GetText().empty()) m->data[seq] = ud.GetBody();
    } else {
      if (m->assemble) m->notes.push_back("part " + std::to_string(seq) + " out of range");
      ud.ToContent(&m->ctx);
    }
  }
  errors.EndArray();
  Json j;
  if (json) j.BeginObject().Key("messages").BeginArray();
  int n = 0;
  for (auto& m : messages) {
    if (m->assemble) m->assemble->DoAssemble(&m->ctx);
    // The reassembly keeps texts only: 8-bit data of the parts follows as one item, in order.
    std::vector<uint8_t> data;
    for (const auto& d : m->data) data.insert(data.end(), d.second.begin(), d.second.end());
    if (!data.empty()) {
      CSmSource* src = new CSmSource;
      src->SetData(data.data(), static_cast<int>(data.size()));
      m->ctx.GetContent()->AddItem(src, false, true);
    }
    PrintMessage(++n, *m, extract, json, j);
  }
  if (json) {
    j.EndArray();
    std::printf("%s,\"errors\":%s}\n", j.Str().c_str(), errors.Str().c_str());
  }
  return status;
}

}  // namespace sms
}  // namespace cli
}  // namespace hs
