#include "messaging/mms/MmsValueText.h"

#include <cstdio>

#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

namespace {

bool ReadToken(int code, WspReader& v, ValueText* out) {
  if (v.atEnd() || !(v.Peek() & 0x80)) return false;
  uint8_t b = v.Octet();
  out->number = b;
  out->isToken = true;
  const char* name = MmsTokenName(code, b);
  out->text = name ? name : "0x" + Hex(b);
  return true;
}

bool ReadTime(WspReader& v, ValueText* out) {
  uint32_t len = 0;
  if (v.atEnd() || v.Peek() > 31 || !v.ValueLength(&len)) return false;
  WspReader t = v.Sub(len);
  uint8_t token = t.Octet();
  if (!t.ok() || (token != 0x80 && token != 0x81)) return false;
  out->relative = token == 0x81;
  bool ok = out->relative ? t.IntegerValue(&out->number) : t.LongInteger(&out->number);
  if (!ok || !t.atEnd()) return false;
  out->text = out->relative ? "+" + std::to_string(out->number) + " s"
                            : FormatUtcTime(static_cast<int64_t>(out->number));
  return true;
}

bool ReadAddress(WspReader& v, ValueText* out) {
  uint32_t len = 0;
  if (v.atEnd() || v.Peek() > 31 || !v.ValueLength(&len)) return false;
  WspReader a = v.Sub(len);
  uint8_t token = a.Octet();
  if (token == 0x81 && a.atEnd()) {
    out->insertAddress = true;
    out->text = "<insert address>";
    return true;
  }
  EncodedString s;
  if (token != 0x80 || !a.EncodedStringValue(&s) || !a.atEnd()) return false;
  out->text = s.text;
  out->charset = s.charset;
  return true;
}

bool ReadVersion(WspReader& v, ValueText* out) {
  if (!v.atEnd() && (v.Peek() & 0x80)) {
    out->number = v.Octet() & 0x7F;
    out->text =
        std::to_string((out->number >> 4) & 0x07) + "." + std::to_string(out->number & 0x0F);
    return true;
  }
  std::string text;
  if (!v.TextString(&text)) return false;
  out->text = SanitizeText(text);
  unsigned major = 0, minor = 0;
  if (std::sscanf(text.c_str(), "%u.%u", &major, &minor) >= 1)
    out->number = ((major & 0x07) << 4) | (minor & 0x0F);
  return true;
}

/// Value-length, forward count, then an address or a date.
bool ReadSent(WspReader& v, bool date, ValueText* out) {
  uint32_t len = 0;
  if (v.atEnd() || v.Peek() > 31 || !v.ValueLength(&len)) return false;
  WspReader s = v.Sub(len);
  uint64_t count = 0;
  if (!s.IntegerValue(&count)) return false;
  if (date) {
    if (!s.LongInteger(&out->number)) return false;
    out->text = std::to_string(count) + ": " + FormatUtcTime(static_cast<int64_t>(out->number));
  } else {
    EncodedString a;
    if (!s.EncodedStringValue(&a)) return false;
    out->text = std::to_string(count) + ": " + a.text;
  }
  return s.atEnd();
}

std::string HexBytes(const std::vector<uint8_t>& raw) {
  std::string s;
  for (size_t i = 0; i < raw.size(); ++i) s += (i ? " " : "") + Hex(raw[i]);
  return s;
}

std::string DispositionText(const std::vector<uint8_t>& raw) {
  WspReader v(raw.data(), raw.size());
  uint32_t len = 0;
  if (v.atEnd() || v.Peek() > 31 || !v.ValueLength(&len)) return HexBytes(raw);
  WspReader d = v.Sub(len);
  std::string text;
  if (!d.atEnd() && (d.Peek() & 0x80)) {
    static const char* const kNames[] = {"form-data", "attachment", "inline"};
    uint8_t b = d.Octet() & 0x7F;
    text = b < 3 ? kNames[b] : "0x" + Hex(static_cast<uint8_t>(b | 0x80));
  } else if (!d.TextString(&text)) {
    return HexBytes(raw);
  }
  ContentTypeValue params;
  while (!d.atEnd() && d.ok()) d.Parameter(&params);
  if (!d.ok()) return HexBytes(raw);
  for (const ContentParam& p : params.params) text += "; " + p.name + "=" + p.value;
  return SanitizeText(text);
}

}  // namespace

bool ReadMmsValue(int code, WspReader& v, ValueText* out) {
  switch (MmsFieldKind(code)) {
    case kValueText: {
      std::string text;
      if (!v.TextString(&text)) return false;
      out->text = SanitizeText(text);
      return true;
    }
    case kValueEncoded: {
      EncodedString s;
      if (!v.EncodedStringValue(&s)) return false;
      out->text = s.text;
      out->charset = s.charset;
      return true;
    }
    case kValueAddress:
      return ReadAddress(v, out);
    case kValueToken:
      return ReadToken(code, v, out);
    case kValueLong:
      if (!v.IntegerValue(&out->number)) return false;
      out->text = std::to_string(out->number);
      return true;
    case kValueDate:
      if (!v.LongInteger(&out->number)) return false;
      out->text = FormatUtcTime(static_cast<int64_t>(out->number));
      return true;
    case kValueTime:
      return ReadTime(v, out);
    case kValueVersion:
      return ReadVersion(v, out);
    case kValueMessageClass:
      if (!v.atEnd() && (v.Peek() & 0x80)) return ReadToken(code, v, out);
      if (!v.TextString(&out->text)) return false;
      out->text = SanitizeText(out->text);
      return true;
    case kValueSentBy:
      return ReadSent(v, false, out);
    case kValueSentDate:
      return ReadSent(v, true, out);
    default:
      return false;
  }
}

std::string GenericValueText(int, const std::vector<uint8_t>& raw) {
  if (raw.empty()) return std::string();
  if (raw[0] >= 32 && raw[0] < 0x80) {
    WspReader v(raw.data(), raw.size());
    std::string text;
    if (v.TextString(&text) && v.atEnd()) return SanitizeText(DecodeMimeWords(text));
  }
  if (raw.size() == 1 && (raw[0] & 0x80)) return std::to_string(raw[0] & 0x7F);
  return HexBytes(raw);
}

std::string PartValueText(int code, const std::vector<uint8_t>& raw) {
  WspReader v(raw.data(), raw.size());
  switch (code) {
    case 0x40: {  // Content-ID: a quoted string, sometimes sent without its quote
      std::string text;
      if (!raw.empty() && raw[0] >= 32 && v.TextString(&text, true) && v.atEnd())
        return SanitizeText(text);
      break;
    }
    case 0x12:    // Date
    case 0x14:    // Expires
    case 0x1D: {  // Last-Modified
      uint64_t t = 0;
      if (!raw.empty() && raw[0] <= 30 && v.LongInteger(&t) && v.atEnd())
        return FormatUtcTime(static_cast<int64_t>(t));
      break;
    }
    case 0x2E:  // Content-Disposition, both encodings
    case 0x45:
      return DispositionText(raw);
    default:
      break;
  }
  return GenericValueText(code, raw);
}

std::string FormatUtcTime(int64_t seconds) {
  int64_t days = seconds / 86400;
  int64_t rem = seconds % 86400;
  if (rem < 0) rem += 86400, --days;
  // Days since 1970-01-01 to a civil date (proleptic Gregorian calendar).
  int64_t z = days + 719468;
  int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  int64_t doe = z - era * 146097;
  int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  int64_t y = yoe + era * 400;
  int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  int64_t mp = (5 * doy + 2) / 153;
  int64_t d = doy - (153 * mp + 2) / 5 + 1;
  int64_t m = mp < 10 ? mp + 3 : mp - 9;
  if (m <= 2) ++y;
  char buf[64];
  std::snprintf(buf, sizeof(buf), "%04lld-%02lld-%02lldT%02lld:%02lld:%02lldZ",
                static_cast<long long>(y), static_cast<long long>(m), static_cast<long long>(d),
                static_cast<long long>(rem / 3600), static_cast<long long>(rem / 60 % 60),
                static_cast<long long>(rem % 60));
  return buf;
}

std::string SanitizeText(const std::string& text) {
  return SanitizeUtf8(text);
}

std::string Hex(uint8_t value) {
  char buf[4];
  std::snprintf(buf, sizeof(buf), "%02X", value);
  return buf;
}

}  // namespace mms
}  // namespace hs
