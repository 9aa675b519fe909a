#include "handset/messaging/SmText.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "handset/platform/GsmCodec.h"
#include "messaging/sms/SmIo.h"
#include "platform/Os.h"

namespace {

std::u16string Units(const char* text) {
  return text ? hs::os::AnsiToUtf16(text, std::strlen(text)) : std::u16string();
}

bool IsHigh(char16_t u) {
  return u >= 0xD800 && u <= 0xDBFF;
}
bool IsLow(char16_t u) {
  return u >= 0xDC00 && u <= 0xDFFF;
}

ME_SMS_ENCODE Resolve(ME_SMS_ENCODE enc, const char* text) {
  if (enc != SMS_ENC_AUTO) return enc;
  return IsGsm7BitAlphabet(text) ? SMS_ENC_GSM7 : SMS_ENC_UCS2;
}

}  // namespace

CSmText::CSmText(const char* s) : CSmMedia(SMOBJ_TEXT) {
  SetData(s ? s : "");
}

CSmText::CSmText(const unsigned short* ucs2, int count) : CSmMedia(SMOBJ_TEXT) {
  std::u16string units;
  if (ucs2 && count > 0) units.assign(ucs2, ucs2 + count);
  SetData(hs::os::Utf16ToAnsi(units.data(), units.size()).c_str());
}

CSmText::CSmText(const CSmText& other) : CSmMedia(other) {}

CSmText& CSmText::operator=(const CSmText& other) {
  CSmMedia::operator=(other);
  return *this;
}

CSmText& CSmText::operator=(const char* s) {
  SetData(s ? s : "");
  return *this;
}

CSmText& CSmText::operator+=(const CSmText& other) {
  std::string joined = static_cast<const char*>(const_cast<CSmText*>(this)->GetData());
  joined += static_cast<const char*>(const_cast<CSmText&>(other).GetData());
  SetData(joined.c_str());
  return *this;
}

CSmText CSmText::operator+(const CSmText& other) const {
  CSmText sum(*this);
  sum += other;
  return sum;
}

CSmText::operator char*() {
  return static_cast<char*>(GetData());
}

char CSmText::operator[](int i) const {
  return i >= 0 && i < GetLength() ? static_cast<const char*>(m_pvRawData)[i] : '\0';
}

void* CSmText::GetData() {
  static char empty[1] = {'\0'};
  return m_pvRawData ? m_pvRawData : empty;
}

int CSmText::GetLength() const {
  if (!m_pvRawData || m_nRawSize <= 0) return 0;
  const void* nul = std::memchr(m_pvRawData, 0, static_cast<size_t>(m_nRawSize));
  return nul ? static_cast<int>(static_cast<const char*>(nul) -
                                static_cast<const char*>(m_pvRawData))
             : m_nRawSize;
}

bool CSmText::SetData(const char* s) {
  if (!s) s = "";
  // The new text may be this item's own (or part of it): copy it out before freeing.
  std::string copy(s);
  FreeData();
  size_t n = copy.size();
  bool held = n + 1 <= 0x7FFFFFFF && CSmMedia::SetData(copy.c_str(), static_cast<int>(n + 1));
  m_nUsePos = GetNumOfWords();
  return held;
}

int CSmText::GetNumOfWords() const {
  int n = GetLength();
  return n ? static_cast<int>(hs::os::AnsiToUtf16Length(static_cast<const char*>(m_pvRawData),
                                                        static_cast<size_t>(n)))
           : 0;
}

int CSmText::Remove(char c) {
  int n = GetLength();
  if (!n) return 0;
  char* s = static_cast<char*>(m_pvRawData);
  int w = 0;
  for (int r = 0; r < n; ++r)
    if (s[r] != c) s[w++] = s[r];
  s[w] = '\0';
  return n - w;
}

CSmMedia* CSmText::Clone() const {
  return new CSmText(*this);
}

int CSmText::EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const {
  const char* text = static_cast<const char*>(const_cast<CSmText*>(this)->GetData());
  if (Resolve(enc, text) == SMS_ENC_GSM7) {
    int bits = 7 * Gsm7BitAlphabetLength(text);
    return bOctets ? (bits + 7) / 8 : bits;
  }
  int words = GetNumOfWords();
  return bOctets ? 2 * words : 16 * words;
}

int CSmText::Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) {
  const char* text = static_cast<const char*>(GetData());
  if (!out || room <= 0) return 0;
  int written = 0;
  if (Resolve(enc, text) == SMS_ENC_GSM7) {
    std::vector<unsigned char> septets(static_cast<size_t>(Gsm7BitAlphabetLength(text)) + 1);
    int n = EncodeGsm7BitChars(text, septets.data(), static_cast<int>(septets.size()));
    written = PackGsm7Bit(septets.data(), n, 0, out, room);
    if (n > 0 && written == 0) return 0;
  } else {
    std::u16string units = Units(text);
    if (units.size() * 2 > static_cast<size_t>(room)) return 0;
    for (char16_t u : units) {
      out[written++] = static_cast<unsigned char>(u >> 8);
      out[written++] = static_cast<unsigned char>(u);
    }
  }
  out += written;
  room -= written;
  return written;
}

CSmText* CSmText::Separate(int nSize, ME_SMS_ENCODE enc) {
  if (nSize < 1) return nullptr;
  const char* text = static_cast<const char*>(GetData());
  std::u16string units = Units(text);
  bool gsm = Resolve(enc, text) == SMS_ENC_GSM7;
  long limit = gsm ? static_cast<long>(nSize) * 8 / 7 : nSize / 2;
  size_t cut = 0;
  long used = 0;
  while (cut < units.size()) {
    size_t step = IsHigh(units[cut]) && cut + 1 < units.size() && IsLow(units[cut + 1]) ? 2 : 1;
    long cost = gsm ? (step == 2 ? 1 : (Gsm7BitCharSeptets(units[cut]) == 2 ? 2 : 1))
                    : static_cast<long>(step);
    if (used + cost > limit) break;
    used += cost;
    cut += step;
  }
  if (cut >= units.size()) return nullptr;
  const unsigned short* rest = reinterpret_cast<const unsigned short*>(units.data() + cut);
  CSmText* tail = new CSmText(rest, static_cast<int>(units.size() - cut));
  tail->SetPosition(m_nBeginPos + static_cast<int>(cut));
  SetData(hs::os::Utf16ToAnsi(units.data(), cut).c_str());
  return tail;
}

bool CSmText::SaveAs(const char* path) const {
  int n = GetLength();
  if (!path || n == 0) return false;
  return hs::os::WriteFileAtomic(path, m_pvRawData, static_cast<size_t>(n));
}

bool CSmText::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  CSmMedia::UnpackData(prefix, blk);
  // A stored block without its NUL is cut to its bytes and terminated, so the text never runs
  // past the block.
  int n = GetLength();
  if (m_pvRawData && n == m_nRawSize) {
    std::string s(static_cast<const char*>(m_pvRawData), static_cast<size_t>(n));
    int use = m_nUsePos;
    SetData(s.c_str());
    m_nUsePos = use;
  }
  return true;
}

bool CSmText::Load(CArchive& ar) {
  int32_t pos = 0, n = 0;
  ar >> pos >> n;
  std::vector<uint8_t> bytes;
  if (!ar.IsGood() || !hs::sms::ReadBlock(ar, n, &bytes)) return false;
  bytes.push_back(0);
  SetData(reinterpret_cast<const char*>(bytes.data()));
  m_nBeginPos = pos;
  return true;
}

bool CSmText::Save(CArchive& ar) {
  int n = GetLength();
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(m_nBeginPos)
     << static_cast<int32_t>(n + 1);
  ar.Write(GetData(), static_cast<size_t>(n) + 1);
  return ar.IsGood();
}

CSmMedia* CSmText::_IeDecoder(unsigned char*&) {
  return nullptr;
}
