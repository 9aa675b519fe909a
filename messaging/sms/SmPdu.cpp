#include "handset/messaging/SmPdu.h"

#include <cctype>
#include <string>

#include "handset/platform/GsmCodec.h"
#include "handset/platform/Results.h"
#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"
#include "platform/Os.h"

namespace {

constexpr int kMaxDigits = 20;
constexpr int kMaxSmscOctets = 11;

int Fail(CString* detail, int code, const std::string& what) {
  if (detail) *detail = what;
  return code;
}

// Semi-octet digits: the low nibble first; 0xA-0xE are '*', '#', 'a', 'b', 'c'; 0xF fills.
std::string Digits(const uint8_t* p, int octets, int digits) {
  static const char kDigit[] = "0123456789*#abc";
  std::string s;
  for (int i = 0; i < octets && static_cast<int>(s.size()) < digits; ++i) {
    for (int nib : {p[i] & 0x0F, p[i] >> 4}) {
      if (nib == 0xF || static_cast<int>(s.size()) >= digits) break;
      s += kDigit[nib];
    }
  }
  return s;
}

// An address of `digits` semi-octets after its type octet; alphanumeric ones are packed GSM text.
std::string AddressText(unsigned char type, const uint8_t* p, int digits) {
  int octets = (digits + 1) / 2;
  if ((type & 0x70) == 0x50) {
    unsigned char septets[kMaxDigits * 4 / 7 + 1];
    int n = UnpackGsm7Bit(p, octets, 0, digits * 4 / 7, septets);
    unsigned short units[sizeof septets];
    int u = Gsm7BitToUCS2(septets, n, units, static_cast<int>(sizeof septets));
    return hs::os::Utf16ToAnsi(reinterpret_cast<const char16_t*>(units), static_cast<size_t>(u));
  }
  std::string s = Digits(p, octets, digits);
  return ((type & 0x70) == 0x10 && !s.empty()) ? "+" + s : s;
}

int ReadAddress(hs::ByteReader& r, CString* text, unsigned char* type, CString* detail,
                const char* what) {
  int digits = r.u8();
  unsigned char t = r.u8();
  if (!r.ok()) return Fail(detail, hs::sms::kErrTruncated, std::string("cut inside the ") + what);
  if (digits > kMaxDigits)
    return Fail(detail, hs::sms::kErrAddress,
                std::string("the ") + what + " claims " + std::to_string(digits) + " digits");
  const uint8_t* p = r.bytes(static_cast<size_t>(digits + 1) / 2);
  if (!p) return Fail(detail, hs::sms::kErrTruncated, std::string("cut inside the ") + what);
  *text = AddressText(t, p, digits);
  if (type) *type = t;
  return 0;
}

int Bcd(uint8_t b) {
  return (b & 0x0F) * 10 + (b >> 4);
}

bool ReadTime(hs::ByteReader& r, ME_CAL_DATE* d, int* tz) {
  const uint8_t* p = r.bytes(7);
  if (!p) return false;
  int year = Bcd(p[0]);
  *d = ME_CAL_DATE(year < 70 ? 2000 + year : 1900 + year, Bcd(p[1]), Bcd(p[2]), Bcd(p[3]),
                   Bcd(p[4]), Bcd(p[5]));
  int q = (p[6] & 0x07) * 10 + (p[6] >> 4);
  *tz = (p[6] & 0x08) ? -q : q;
  return true;
}

}  // namespace

int CSmPdu::ParseHex(const char* line, CString* detail) {
  std::string hex;
  for (const char* p = line ? line : ""; *p; ++p) {
    unsigned char c = static_cast<unsigned char>(*p);
    if (std::isspace(c) || c == '"') continue;
    if (!std::isxdigit(c))
      return Fail(detail, hs::sms::kErrHex,
                  std::string("'") + static_cast<char>(c) + "' at column " +
                      std::to_string(p - line + 1) + " is not a hex digit");
    hex += static_cast<char>(c);
  }
  if (hex.empty() || hex.size() % 2)
    return Fail(detail, hs::sms::kErrHex,
                hex.empty() ? "no hex digits" : "an odd number of hex digits");
  std::vector<uint8_t> bytes(hex.size() / 2);
  for (size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<uint8_t>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
  // The reading that accounts for every octet wins; then one that only leaves octets after the
  // user data (some modems append them), the service-centre reading first.
  CSmPdu bare;
  int withRc = Parse(bytes.data(), bytes.size(), true, detail);
  if (withRc == 0) return 0;
  CSmPdu with = *this;
  int bareRc = bare.Parse(bytes.data(), bytes.size(), false, nullptr);
  if (bareRc == 0 || (bareRc == hs::sms::kErrTrailing && withRc != hs::sms::kErrTrailing)) {
    *this = bare;
    return 0;
  }
  if (withRc == hs::sms::kErrTrailing) return 0;
  return Parse(bytes.data(), bytes.size(), true, detail);
}

namespace {

// The fields between the first octet and the user data length. `*userData` turns false when a
// status report ends without user data.
int ReadFields(hs::ByteReader& r, uint8_t first, CSmPdu* p, CString* detail, bool* userData) {
  int rc = 0;
  *userData = true;
  if (p->m_eType == SMPDU_DELIVER) {
    if ((rc = ReadAddress(r, &p->m_strAddress, &p->m_nAddressType, detail, "originator address")))
      return rc;
    p->m_nPid = r.u8();
    p->m_nDcs = r.u8();
    p->m_bHasTime = ReadTime(r, &p->m_calTime, &p->m_nTzQuarters);
    if (!p->m_bHasTime) return Fail(detail, hs::sms::kErrTruncated, "cut inside the time stamp");
    return 0;
  }
  p->m_nMessageRef = r.u8();
  if (p->m_eType == SMPDU_SUBMIT) {
    if ((rc = ReadAddress(r, &p->m_strAddress, &p->m_nAddressType, detail, "destination address")))
      return rc;
    p->m_nPid = r.u8();
    p->m_nDcs = r.u8();
    p->m_nVpFormat = (first >> 3) & 3;
    size_t vp = p->m_nVpFormat == 0 ? 0 : p->m_nVpFormat == 2 ? 1 : 7;
    const uint8_t* v = r.bytes(vp);
    if (!r.ok()) return Fail(detail, hs::sms::kErrTruncated, "cut inside the validity period");
    if (vp) p->m_vp.assign(v, v + vp);
    return 0;
  }
  if ((rc = ReadAddress(r, &p->m_strAddress, &p->m_nAddressType, detail, "recipient address")))
    return rc;
  p->m_bHasTime = ReadTime(r, &p->m_calTime, &p->m_nTzQuarters);
  if (!p->m_bHasTime || !ReadTime(r, &p->m_calDischarge, &p->m_nDischargeTz))
    return Fail(detail, hs::sms::kErrTruncated, "cut inside the time stamps");
  p->m_nStatus = r.u8();
  if (!r.ok()) return Fail(detail, hs::sms::kErrTruncated, "no status octet");
  *userData = false;
  if (r.atEnd()) return 0;  // the parameter indicator and what follows are optional
  uint8_t pi = r.u8();
  // Reserved indicator bits mean the indicator is not to be trusted: it and what follows are
  // ignored, as receivers are told to do.
  if (pi & 0x78) return 0;
  if (pi & 1) p->m_nPid = r.u8();
  if (pi & 2) p->m_nDcs = r.u8();
  if (!r.ok()) return Fail(detail, hs::sms::kErrTruncated, "cut inside the parameters");
  *userData = (pi & 4) != 0;
  if (*userData) return 0;
  p->m_nExtraOctets = static_cast<int>(r.remaining());
  return r.atEnd() ? 0 : Fail(detail, hs::sms::kErrTrailing, "octets after the parameters");
}

int ReadUserData(hs::ByteReader& r, CSmPdu* p, CString* detail) {
  p->m_nUdl = r.u8();
  if (!r.ok()) return Fail(detail, hs::sms::kErrTruncated, "cut before the user data length");
  p->m_bHasUd = true;
  bool gsm = CSmUserData::AlphabetOfDcs(p->m_nDcs, nullptr, nullptr) == SMALPHA_GSM7;
  if (p->m_nUdl > (gsm ? 160 : 140))
    return Fail(detail, hs::sms::kErrUdlRange,
                "user data length " + std::to_string(p->m_nUdl) + (gsm ? " septets" : " octets"));
  size_t need = gsm ? (static_cast<size_t>(p->m_nUdl) * 7 + 7) / 8 : static_cast<size_t>(p->m_nUdl);
  if (r.remaining() < need)
    return Fail(detail, hs::sms::kErrUdShort,
                "user data needs " + std::to_string(need) + " octets, " +
                    std::to_string(r.remaining()) + " present");
  p->m_ud.assign(r.cursor(), r.cursor() + need);
  r.skip(need);
  p->m_nExtraOctets = static_cast<int>(r.remaining());
  if (p->m_nExtraOctets)
    return Fail(detail, hs::sms::kErrTrailing,
                std::to_string(p->m_nExtraOctets) + " octets after the user data");
  return 0;
}

}  // namespace

int CSmPdu::Parse(const uint8_t* data, size_t size, bool withSmsc, CString* detail) {
  *this = CSmPdu();
  hs::ByteReader r(data, size);
  if (withSmsc) {
    int len = r.u8();
    if (len > kMaxSmscOctets)
      return Fail(detail, hs::sms::kErrAddress,
                  "service-centre address of " + std::to_string(len) + " octets");
    if (len > 0) {
      unsigned char type = r.u8();
      const uint8_t* p = r.bytes(static_cast<size_t>(len - 1));
      if (!p) return Fail(detail, hs::sms::kErrTruncated, "cut inside the service-centre address");
      m_strSmsc = AddressText(type, p, (len - 1) * 2);
    }
    m_bHasSmsc = true;
  }
  uint8_t first = r.u8();
  if (!r.ok()) return Fail(detail, hs::sms::kErrTruncated, "no first octet");
  int mti = first & 3;
  if (mti == 3) return Fail(detail, hs::sms::kErrReservedType, "message type 3 is reserved");
  m_eType = static_cast<ESmPduType>(mti);
  m_bUdhi = (first & 0x40) != 0;
  bool userData = true;
  if (int rc = ReadFields(r, first, this, detail, &userData)) return rc;
  return userData ? ReadUserData(r, this, detail) : 0;
}

int CSmPdu::DecodeUserData(CSmUserData* out) const {
  if (!out) return hs::sms::kErrTruncated;
  return out->Decode(m_nDcs, m_bUdhi, m_nUdl, m_ud.data(), static_cast<int>(m_ud.size()));
}

std::vector<uint8_t> CSmPdu::BuildSubmit(const char* to, int messageRef, const SM_UD_SEGMENT& seg,
                                         int* tpduLength) {
  std::string digits;
  bool international = false;
  for (const char* p = to ? to : ""; *p; ++p) {
    if (*p >= '0' && *p <= '9') digits += *p;
    if (*p == '+' && digits.empty()) international = true;
  }
  if (digits.size() > static_cast<size_t>(kMaxDigits)) return {};
  hs::ByteWriter w;
  w.u8(0x00);  // no service-centre address: the phone's own is used
  w.u8(static_cast<uint8_t>(0x01 | (seg.bUdhi ? 0x40 : 0)));
  w.u8(static_cast<uint8_t>(messageRef));
  w.u8(static_cast<uint8_t>(digits.size()));
  w.u8(international ? 0x91 : 0x81);
  for (size_t i = 0; i < digits.size(); i += 2) {
    int lo = digits[i] - '0';
    int hi = i + 1 < digits.size() ? digits[i + 1] - '0' : 0xF;
    w.u8(static_cast<uint8_t>(lo | (hi << 4)));
  }
  w.u8(0x00);  // protocol identifier: plain short message
  w.u8(seg.nDcs);
  w.u8(static_cast<uint8_t>(seg.nUdl));
  w.bytes(seg.abUd, static_cast<size_t>(seg.nLength));
  if (tpduLength) *tpduLength = static_cast<int>(w.size()) - 1;
  return w.take();
}
