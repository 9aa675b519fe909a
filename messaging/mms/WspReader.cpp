#include "messaging/mms/WspReader.h"

#include "handset/platform/Results.h"
#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspTables.h"

namespace hs {
namespace mms {

namespace {

const uint8_t kQuote = 127;
const uint8_t kLengthQuote = 31;

bool IsUtf16Charset(int mib) {
  return mib == kCharsetUcs2 || mib == kCharsetUtf16 || mib == kCharsetUtf16Be ||
         mib == kCharsetUtf16Le;
}

}  // namespace

std::string ContentTypeValue::ToString() const {
  std::string s = media;
  for (const ContentParam& p : params) s += "; " + p.name + "=" + p.value;
  return s;
}

bool WspReader::Fail(int code) {
  if (!error_) error_ = code;
  return false;
}

uint8_t WspReader::Octet() {
  if (!ok()) return 0;
  if (r_.atEnd()) return Fail(mmspdu::kErrTruncated), 0;
  return r_.u8();
}

bool WspReader::Skip(size_t n) {
  if (!ok()) return false;
  if (!r_.skip(n)) return Fail(mmspdu::kErrTruncated);
  return true;
}

WspReader WspReader::Sub(size_t n) {
  if (!ok() || n > r_.remaining()) {
    Fail(mmspdu::kErrTruncated);
    WspReader empty(nullptr, 0);
    empty.error_ = error_;
    return empty;
  }
  return WspReader(r_.sub(n));
}

bool WspReader::Uintvar(uint32_t* value) {
  uint32_t v = 0;
  for (int i = 0; i < 5; ++i) {
    if (!ok()) return false;
    if (r_.atEnd()) return Fail(mmspdu::kErrTruncated);
    uint8_t b = r_.u8();
    if (v & 0xFE000000u) return Fail(mmspdu::kErrBadValue);  // more than 32 bits
    v = (v << 7) | (b & 0x7F);
    if (!(b & 0x80)) {
      *value = v;
      return true;
    }
  }
  return Fail(mmspdu::kErrBadValue);
}

bool WspReader::ValueLength(uint32_t* length) {
  uint8_t b = Octet();
  if (!ok()) return false;
  if (b < kLengthQuote) {
    *length = b;
  } else if (b == kLengthQuote) {
    if (!Uintvar(length)) return false;
  } else {
    return Fail(mmspdu::kErrBadValue);
  }
  if (*length > r_.remaining()) return Fail(mmspdu::kErrTruncated);
  return true;
}

bool WspReader::LongInteger(uint64_t* value) {
  uint8_t n = Octet();
  if (!ok()) return false;
  if (n == 0 || n > 30) return Fail(mmspdu::kErrBadValue);
  if (n > r_.remaining()) return Fail(mmspdu::kErrTruncated);
  if (n > 8) return Fail(mmspdu::kErrBadValue);  // larger than any value kept here
  uint64_t v = 0;
  for (uint8_t i = 0; i < n; ++i) v = (v << 8) | r_.u8();
  *value = v;
  return true;
}

bool WspReader::IntegerValue(uint64_t* value) {
  if (!ok()) return false;
  if (r_.atEnd()) return Fail(mmspdu::kErrTruncated);
  if (Peek() & 0x80) {
    *value = Octet() & 0x7F;
    return true;
  }
  return LongInteger(value);
}

bool WspReader::TextString(std::string* text, bool dropQuote) {
  if (!ok()) return false;
  const uint8_t* p = r_.cursor();
  size_t n = r_.remaining();
  size_t len = 0;
  while (len < n && p[len] != 0) ++len;
  if (len == n) return Fail(mmspdu::kErrTruncated);
  size_t from = 0;
  if (len > 0 && (p[0] == kQuote || (dropQuote && p[0] == '"'))) from = 1;
  text->assign(reinterpret_cast<const char*>(p) + from, len - from);
  r_.skip(len + 1);
  return true;
}

bool WspReader::EncodedStringValue(EncodedString* out) {
  if (!ok()) return false;
  if (r_.atEnd()) return Fail(mmspdu::kErrTruncated);
  out->charset = 0;
  if (Peek() <= kLengthQuote) {
    uint32_t len = 0;
    if (!ValueLength(&len)) return false;
    WspReader v = Sub(len);
    uint64_t charset = 0;
    if (!v.IntegerValue(&charset)) return Fail(v.error() ? mmspdu::kErrBadValue : 0);
    out->charset = static_cast<int>(charset > 0x7FFFFFFF ? 0 : charset);
    const uint8_t* p = v.r_.cursor();
    size_t n = v.r_.remaining();
    if (n > 0 && p[0] == kQuote) ++p, --n;
    if (IsUtf16Charset(out->charset)) {
      // The terminator of a two-byte text may be one or two zero octets.
      if (n > 0 && p[n - 1] == 0) --n;
      if (n % 2 == 1 && p[n - 1] == 0) --n;
    } else {
      size_t len2 = 0;
      while (len2 < n && p[len2] != 0) ++len2;
      n = len2;
    }
    out->raw.assign(reinterpret_cast<const char*>(p), n);
  } else if (!TextString(&out->raw)) {
    return false;
  }
  const uint8_t* bytes = reinterpret_cast<const uint8_t*>(out->raw.data());
  out->text = SanitizeUtf8(DecodeMimeWords(DecodeCharset(bytes, out->raw.size(), out->charset)));
  return true;
}

bool WspReader::RawValue(std::vector<uint8_t>* raw) {
  if (!ok()) return false;
  if (r_.atEnd()) return Fail(mmspdu::kErrTruncated);
  size_t start = r_.tell();
  uint8_t b = Peek();
  if (b <= kLengthQuote) {
    uint32_t len = 0;
    if (!ValueLength(&len) || !Skip(len)) return false;
  } else if (b < 0x80) {
    std::string text;
    if (!TextString(&text)) return false;
  } else {
    r_.u8();
  }
  raw->assign(r_.data() + start, r_.data() + r_.tell());
  return true;
}

bool WspReader::TypedParameter(int code, ContentParam* p) {
  uint64_t n = 0;
  switch (code) {
    case kParamCharset:
      if (Peek() >= 32 && Peek() < 0x80) {  // a charset sent by name
        if (!TextString(&p->value)) return false;
        p->number = static_cast<uint64_t>(CharsetMib(p->value));
        return true;
      }
      if (!IntegerValue(&n)) return false;
      p->number = n;
      p->isNumber = true;
      p->value = n == 0                             ? "*"
                 : CharsetName(static_cast<int>(n)) ? CharsetName(static_cast<int>(n))
                                                    : std::to_string(n);
      return true;
    case kParamRelatedType:
      if (Peek() & 0x80) {
        n = Octet() & 0x7F;
        const char* name = WspContentTypeName(static_cast<int>(n));
        p->value = name ? name : std::to_string(n);
        return true;
      }
      return TextString(&p->value);
    case kParamQ: {
      uint32_t q = 0;
      if (!Uintvar(&q)) return false;
      p->number = q;
      p->isNumber = true;
      p->value = std::to_string(q);
      return true;
    }
    default:
      break;
  }
  // Every other parameter is an Integer-value or a Text-value.
  if (Peek() >= 0x80 || (Peek() >= 1 && Peek() <= 30)) {
    if (!IntegerValue(&n)) return false;
    p->number = n;
    p->isNumber = true;
    p->value = std::to_string(n);
    return true;
  }
  if (Peek() == 0) return Octet(), true;  // No-value
  return TextString(&p->value, true);
}

bool WspReader::Parameter(ContentTypeValue* ct) {
  ContentParam p;
  uint8_t b = Peek();
  if (b >= 32 && b < 0x80) {
    if (!TextString(&p.name)) return false;
    if (!TypedParameter(-1, &p)) return false;
  } else {
    uint64_t code = 0;
    if (!IntegerValue(&code)) return false;
    p.code = static_cast<int>(code > 0xFFFF ? 0xFFFF : code);
    const char* name = WspParameterName(p.code);
    p.name = name ? name : "param-" + std::to_string(p.code);
    if (!TypedParameter(p.code, &p)) return false;
  }
  if (p.code == kParamCharset || (p.code < 0 && EqualNoCase(p.name, "charset")))
    ct->charset = static_cast<int>(p.number);
  else if (p.code == kParamStart || p.code == kParamStart14 ||
           (p.code < 0 && EqualNoCase(p.name, "start")))
    ct->start = p.value;
  else if (p.code == kParamRelatedType || (p.code < 0 && EqualNoCase(p.name, "type")))
    ct->startType = p.value;
  else if (p.code == kParamName || p.code == kParamName14 || p.code == kParamFilename ||
           p.code == kParamFilename14 || (p.code < 0 && EqualNoCase(p.name, "name")))
    ct->name = p.value;
  ct->params.push_back(std::move(p));
  return true;
}

bool WspReader::ContentType(ContentTypeValue* out) {
  *out = ContentTypeValue();
  if (!ok()) return false;
  if (r_.atEnd()) return Fail(mmspdu::kErrTruncated);
  uint8_t b = Peek();
  if (b & 0x80) {
    out->code = Octet() & 0x7F;
  } else if (b > kLengthQuote) {
    return TextString(&out->media);
  } else {
    uint32_t len = 0;
    if (!ValueLength(&len)) return false;
    WspReader v = Sub(len);
    if (v.atEnd()) return Fail(mmspdu::kErrBadValue);
    uint8_t first = v.Peek();
    if (first & 0x80 || first <= 30) {
      uint64_t code = 0;
      if (!v.IntegerValue(&code)) return Fail(mmspdu::kErrBadValue);
      out->code = static_cast<int>(code > 0xFFFF ? 0xFFFF : code);
    } else if (!v.TextString(&out->media)) {
      return Fail(mmspdu::kErrBadValue);
    }
    while (!v.atEnd() && v.ok()) v.Parameter(out);
    if (!v.ok()) return Fail(mmspdu::kErrBadValue);
  }
  if (out->code >= 0) {
    const char* name = WspContentTypeName(out->code);
    out->media = name ? name : "application/x-wsp-" + std::to_string(out->code);
  }
  return true;
}

}  // namespace mms
}  // namespace hs
