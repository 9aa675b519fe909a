#include "handset/messaging/SmPicture.h"

#include <algorithm>
#include <vector>

#include "messaging/sms/SmIo.h"
#include "platform/ByteReader.h"

namespace {

constexpr unsigned char kLargeIei = 0x10;     // 32 x 32
constexpr unsigned char kSmallIei = 0x11;     // 16 x 16
constexpr unsigned char kVariableIei = 0x12;  // any size up to 1024 pixels
constexpr int kMaxBits = 1024;

// What an IE carries for a bitmap: the IEI, the width taken (a multiple of 8) and the rows.
struct Shape {
  unsigned char iei = 0;
  int w8 = 0;
  int rows = 0;
  int BitmapBytes() const { return rows * w8 / 8; }
  int IeSize() const { return iei == kVariableIei ? BitmapBytes() + 5 : BitmapBytes() + 3; }
};

bool ShapeOf(const CBmpWrp& bmp, Shape* s) {
  int w = bmp.GetWidth(), h = bmp.GetHeight();
  if (bmp.IsEmpty()) return false;
  if (w == h && (w == 32 || w == 16)) {
    s->iei = w == 32 ? kLargeIei : kSmallIei;
    s->w8 = w;
    s->rows = h;
    return true;
  }
  s->iei = kVariableIei;
  s->w8 = w / 8 * 8;
  if (s->w8 == 0) return false;
  s->rows = h < kMaxBits / s->w8 ? h : kMaxBits / s->w8;
  return s->rows > 0;
}

// Packs `rows` rows of the bitmap, `w8` pixels each, most significant bit first.
void PackRows(const CBmpWrp& bmp, int w8, int rows, unsigned char* out) {
  int bytes = w8 / 8;
  std::vector<uint8_t> record = bmp.GetRecord();
  const uint8_t* bits = record.data() + CBmpWrp::kHeaderSize;
  int stride = bmp.GetRowBytes();
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < bytes; ++x) *out++ = bits[y * stride + x];
}

}  // namespace

CSmPicture::CSmPicture() : CSmMedia(SMOBJ_PICTURE) {
  m_nUsePos = 1;
}

bool CSmPicture::SetData(const CBmpWrp& bmp) {
  FreeData();
  if (bmp.IsEmpty()) return false;
  std::vector<uint8_t> record = bmp.GetRecord();
  return CSmMedia::SetData(record.data(), static_cast<int>(record.size()));
}

bool CSmPicture::GetBitmap(CBmpWrp* bmp) const {
  if (!bmp) return false;
  bmp->Empty();
  if (!m_pvRawData || m_nRawSize < 12) return false;
  size_t size = static_cast<size_t>(m_nRawSize);
  if (bmp->SetRecord(m_pvRawData, size)) return true;
  // Records of other writers: only the 2nd and 3rd words (width, height) are certain. The rows
  // are taken as the record's last bytes when it holds them all, else as what follows those
  // words, the rest white.
  hs::ByteReader r(m_pvRawData, size);
  r.skip(4);
  int32_t w = r.i32le(), h = r.i32le();
  if (w < 1 || h < 1 || w > CBmpWrp::kMaxSide || h > CBmpWrp::kMaxSide) return false;
  size_t rowBytes = (static_cast<size_t>(w) + 7) / 8, need = rowBytes * static_cast<size_t>(h);
  std::vector<uint8_t> rows(need, 0);
  const uint8_t* b = Bytes();
  if (size - 12 >= need)
    std::copy(b + size - need, b + size, rows.begin());
  else
    std::copy(b + 12, b + size, rows.begin());
  return bmp->SetRows(w, h, static_cast<int>(rowBytes), rows.data(), rows.size());
}

CSmMedia* CSmPicture::Clone() const {
  return new CSmPicture(*this);
}

int CSmPicture::EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE) const {
  CBmpWrp bmp;
  Shape s;
  int octets = GetBitmap(&bmp) && ShapeOf(bmp, &s) ? s.IeSize() : 0;
  return bOctets ? octets : octets * 8;
}

int CSmPicture::Encoder(ME_SMS_ENCODE, unsigned char*& out, int& room) {
  CBmpWrp bmp;
  Shape s;
  if (!out || !GetBitmap(&bmp) || !ShapeOf(bmp, &s) || room < s.IeSize()) return 0;
  int size = s.IeSize();
  out[0] = s.iei;
  out[1] = static_cast<unsigned char>(size - 2);
  out[2] = static_cast<unsigned char>(GetPosition());
  unsigned char* bits = out + 3;
  if (s.iei == kVariableIei) {
    out[3] = static_cast<unsigned char>(s.w8 / 8);
    out[4] = static_cast<unsigned char>(s.rows);
    bits = out + 5;
  }
  PackRows(bmp, s.w8, s.rows, bits);
  out += size;
  room -= size;
  return size;
}

bool CSmPicture::Load(CArchive& ar) {
  int32_t pos = 0, n = 0;
  ar >> pos >> n;
  if (!ar.IsGood()) return false;
  FreeData();
  if (n > 0) {
    std::vector<uint8_t> bytes;
    if (!hs::sms::ReadBlock(ar, n, &bytes)) return false;
    CSmMedia::SetData(bytes.data(), n);
  }
  m_nBeginPos = pos;
  return true;
}

bool CSmPicture::Save(CArchive& ar) {
  int n = GetLength();
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(m_nBeginPos)
     << static_cast<int32_t>(n);
  if (n > 0) ar.Write(m_pvRawData, static_cast<size_t>(n));
  return ar.IsGood();
}

CSmMedia* CSmPicture::_IeDecoder(unsigned char*& p) {
  return p ? _IeDecoder(p, p + 2 + p[1]) : nullptr;
}

CSmMedia* CSmPicture::_IeDecoder(unsigned char*& p, const unsigned char* end) {
  if (!p || end - p < 2) return nullptr;
  unsigned char iei = p[0];
  int len = p[1];
  if (end - p - 2 < len) return nullptr;
  CBmpWrp bmp;
  if (iei == kLargeIei || iei == kSmallIei) {
    int side = iei == kLargeIei ? 32 : 16;
    if (len != side * side / 8 + 1) return nullptr;
    bmp.SetRows(side, side, side / 8, p + 3, static_cast<size_t>(len - 1));
  } else if (iei == kVariableIei) {
    if (len < 3) return nullptr;
    int bytes = p[3], rows = p[4];
    if (bytes == 0 || rows == 0 || bytes * rows > len - 3) return nullptr;
    bmp.SetRows(bytes * 8, rows, bytes, p + 5, static_cast<size_t>(len - 3));
  } else {
    return nullptr;
  }
  if (bmp.IsEmpty()) return nullptr;
  CSmPicture* pic = new CSmPicture;
  pic->SetData(bmp);
  pic->m_nBeginPos = p[2];
  p += 2 + len;
  return pic;
}
