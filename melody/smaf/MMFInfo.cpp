#include "handset/melody/MMFInfo.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "handset/platform/Results.h"
#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

const MMF_WAVCNVT g_DEFAULT_MA2LOWQTY = {2, 4000, 16, 1};
const MMF_WAVCNVT g_DEFAULT_MA2HIQTY = {2, 8000, 16, 1};
const MMF_WAVCNVT g_DEFAULT_MA3LOWQTY = {1, 4000, 8, 1};
const MMF_WAVCNVT g_DEFAULT_MA3HIQTY = {2, 16000, 16, 1};
const MMF_WAVCNVT g_DEFAULT_MA5LOWQTY = {1, 4000, 8, 1};
const MMF_WAVCNVT g_DEFAULT_MA5HIQTY = {2, 24000, 16, 1};

namespace {

namespace rc = hs::smaf;

constexpr int kTrackCount = 16;
constexpr uint16_t kCrcPolynomial = 0x1021;

// Offsets inside the contents-info chunk, counted from its "CNTI" label.
constexpr size_t kCntiCopyStatus = 11;
constexpr size_t kCntiSizeLowByte = 7;
constexpr size_t kCntiOptionData = 13;
// The file chunk size's least significant byte.
constexpr size_t kFileSizeLowByte = 7;
// The copy status as read at open: fixed, assuming the contents-info chunk comes first.
constexpr size_t kFixedCopyStatus = 19;
constexpr int kOptionDataStart = 21;
// Offsets inside a score track, counted from its "MTR" label.
constexpr size_t kMtrNumber = 3;
constexpr size_t kMtrStatusHigh = 12;
constexpr size_t kMtrStatusLow = 13;
constexpr size_t kMtrNextScan = 14;

constexpr char kLabelCnti[] = "CNTI";
constexpr char kLabelCopyright[] = "CR:";
constexpr char kLabelLed[] = "L2:";
constexpr char kLabelScoreTrack[] = "MTR";

constexpr uint8_t kVibHighNibble = 0x40;
constexpr uint8_t kVibLowNibble = 0x04;

// In-place byte store into the image; positions past the end are refused, never written.
bool PokeByte(std::vector<unsigned char>& image, size_t at, uint8_t value) {
  if (at >= image.size()) return false;
  image[at] = value;
  return true;
}

uint8_t PeekByte(const std::vector<unsigned char>& image, size_t at, bool* ok) {
  hs::ByteReader r(image.data(), image.size());
  if (!r.seek(at) || !r.has(1)) {
    *ok = false;
    return 0;
  }
  *ok = true;
  return r.u8();
}

bool ValidTrackIndex(int track) {
  return track >= 0 && track < kTrackCount;
}

}  // namespace

CMMFInfo::CMMFInfo() {
  _InitVariables();
  _CreateCRCTable();
}

CMMFInfo::~CMMFInfo() {
  if (m_bOpened) CloseMMF(1);
}

CMMFInfo::CMMFInfo(const CMMFInfo& other) = default;
CMMFInfo& CMMFInfo::operator=(const CMMFInfo& other) = default;

void CMMFInfo::_InitVariables() {
  m_strFilePath.Empty();
  m_nMIDISupport = 0;
  m_nADPCMNum = 0;
  m_nChannelNum = 0;
  for (int i = 0; i < kTrackCount; ++i) {
    m_nTrackValid[i] = 0;
    m_nVibStatus[i] = 0;
    m_nMA3LedStatus[i] = 0;
  }
  m_byteCopyStatus = 0;
  m_nMA2LedChannel = -1;
  m_nMMFType = -1;
  m_dwMMFSize = 0;
  std::vector<unsigned char>().swap(m_MMFImage);
  m_bModified = 0;
  m_bOpened = 0;
}

void CMMFInfo::_CreateCRCTable() {
  // Computed once per process; every object (one per loaded MIDI file) copies it.
  struct Table {
    uint16_t v[256];
    Table() {
      for (int i = 0; i < 256; ++i) {
        uint16_t x = static_cast<uint16_t>(i << 8);
        for (int bit = 0; bit < 8; ++bit) {
          bool out = (x & 0x8000) != 0;
          x = static_cast<uint16_t>(x << 1);
          if (out) x ^= kCrcPolynomial;
        }
        v[i] = x;
      }
    }
  };
  static const Table table;
  std::memcpy(m_wCRCTable, table.v, sizeof(m_wCRCTable));
}

uint16_t CMMFInfo::_CaculateCRC(const unsigned char* data, unsigned long size) const {
  hs::ByteReader r(data, size);
  const uint8_t* bytes = r.bytes(size);
  uint16_t crc = 0xFFFF;
  for (unsigned long i = 0; bytes && i < size; ++i)
    crc = static_cast<uint16_t>(m_wCRCTable[((crc >> 8) ^ bytes[i]) & 0xFF] ^ (crc << 8));
  return static_cast<uint16_t>(~crc);
}

int CMMFInfo::_SearchLabel(const char* label, int start) const {
  if (m_MMFImage.empty() || !label || start < 0 || static_cast<uint32_t>(start) >= m_dwMMFSize)
    return -1;
  const long long length = static_cast<long long>(std::strlen(label));
  const long long end = static_cast<long long>(m_dwMMFSize) - length - 1;
  if (length == 0 || start >= end) return -1;
  // Candidates are the positions below `end`; the bytes they compare stop at end - 1 + length.
  hs::ByteReader r(m_MMFImage.data(), m_MMFImage.size());
  r.seek(static_cast<size_t>(start));
  const size_t span = static_cast<size_t>(end - 1 + length - start);
  const uint8_t* first = r.bytes(span);
  if (!first) return -1;
  const uint8_t* hit = std::search(first, first + span, label, label + length);
  if (hit == first + span) return -1;
  return static_cast<int>(start + (hit - first) + 1);
}

int CMMFInfo::OpenMMF(const char* path) {
  if (!path) return rc::kErrPath;
  if (m_bOpened) CloseMMF(1);
  int result = _LoadMMF(path);
  if (result != rc::kOk) return result;
  m_bOpened = 1;
  result = _CheckMMFType();
  if (result != rc::kOk) return result;
  if (m_nMMFType == 2) {
    result = _ParseMA2();
    if (result != rc::kOk) return result;
  } else if (m_nMMFType != 3) {
    return rc::kErrType;
  }
  m_strFilePath = path;
  return rc::kOk;
}

int CMMFInfo::OpenMMFBuf(const unsigned char* data, unsigned long size) {
  if (!data || size == 0) return rc::kErrNoData;
  // Copied before closing, so that the caller may pass this object's own image.
  std::vector<unsigned char> fresh;
  bool copied = size <= 0xFFFFFFFFul;
  try {
    hs::ByteReader r(data, size);
    const uint8_t* bytes = r.bytes(size);
    if (copied) fresh.assign(bytes, bytes + size);
  } catch (const std::bad_alloc&) {
    copied = false;
  }
  if (m_bOpened) CloseMMF(1);
  if (!copied) return rc::kErrNoMemory;
  m_MMFImage.swap(fresh);
  m_dwMMFSize = static_cast<uint32_t>(size);
  m_bOpened = 1;
  int result = _CheckMMFType();
  if (result != rc::kOk) return result;
  if (m_nMMFType == 2) return _ParseMA2();
  return m_nMMFType == 3 ? rc::kOk : rc::kErrType;
}

int CMMFInfo::_LoadMMF(const char* path) {
  std::FILE* f = std::fopen(path, "rb");
  if (!f) return rc::kErrOpen;
  long size = -1;
  if (std::fseek(f, 0, SEEK_END) == 0) size = std::ftell(f);
  if (size <= 0 || std::fseek(f, 0, SEEK_SET) != 0) {
    std::fclose(f);
    // A file whose end cannot be found is treated as unreadable rather than as empty.
    return size == 0 ? rc::kErrEmpty : rc::kErrOpen;
  }
  if (static_cast<unsigned long>(size) > 0xFFFFFFFFul) {
    std::fclose(f);
    return rc::kErrNoMemory;
  }
  try {
    std::vector<unsigned char>(static_cast<size_t>(size)).swap(m_MMFImage);
  } catch (const std::bad_alloc&) {
    std::fclose(f);
    std::vector<unsigned char>().swap(m_MMFImage);
    m_dwMMFSize = 0;
    return rc::kErrNoMemory;
  }
  m_dwMMFSize = static_cast<uint32_t>(size);
  size_t got = std::fread(m_MMFImage.data(), 1, m_MMFImage.size(), f);
  std::fclose(f);
  if (got != m_MMFImage.size()) {
    std::vector<unsigned char>().swap(m_MMFImage);
    m_dwMMFSize = 0;
    return rc::kErrShortRead;
  }
  return rc::kOk;
}

int CMMFInfo::_CheckMMFType() {
  if (!m_bOpened) {
    m_nMMFType = -1;
    return rc::kErrNotOpen;
  }
  // Only the MA-2 layout is parsed; every loaded image is treated as MA-2.
  m_nMMFType = 2;
  return rc::kOk;
}

int CMMFInfo::_ParseMA2() {
  int result = _CheckCRC();
  if (result != rc::kOk) return result;
  result = _CheckCopyStatus();
  if (result != rc::kOk) return result;
  result = _CheckMA2Led();
  if (result != rc::kOk) return result;
  return _CheckMA2Vib();
}

int CMMFInfo::_CheckCRC() {
  if (m_MMFImage.empty() || m_dwMMFSize <= 2) return rc::kErrChecksum;
  hs::ByteReader r(m_MMFImage.data(), m_MMFImage.size());
  const uint32_t body = m_dwMMFSize - 2;
  const uint16_t computed = _CaculateCRC(r.bytes(body), body);
  const uint16_t stored = r.u16be();
  return computed == stored ? rc::kOk : rc::kErrChecksum;
}

int CMMFInfo::_CheckCopyStatus() {
  bool ok = false;
  uint8_t status = PeekByte(m_MMFImage, kFixedCopyStatus, &ok);
  // Too short to hold the fixed contents-info bytes: treated like a file too short to check.
  if (!ok) return rc::kErrChecksum;
  m_byteCopyStatus = status;
  if (_SearchLabel(kLabelCopyright, kOptionDataStart) >= 0) m_byteCopyStatus |= 0x01;
  return rc::kOk;
}

int CMMFInfo::_CheckMA2Led() {
  int found = _SearchLabel(kLabelLed, 0);
  if (found < 0) {
    m_nMA2LedChannel = -1;
    return rc::kOk;
  }
  const size_t p = static_cast<size_t>(found - 1);
  bool ok = false;
  uint8_t channel = PeekByte(m_MMFImage, p + std::strlen(kLabelLed), &ok);
  if (ok && channel < kTrackCount) {
    m_nMA2LedChannel = channel;
    return rc::kOk;
  }
  m_nMA2LedChannel = -1;
  return rc::kErrLedChannel;
}

int CMMFInfo::_CheckMA2Vib() {
  const size_t size = m_MMFImage.size();
  hs::ByteReader r(m_MMFImage.data(), size);
  const uint8_t* all = r.bytes(size);
  size_t i = 0;
  while (all && i < size) {
    const uint8_t* hit = std::search(all + i, all + size, kLabelScoreTrack, kLabelScoreTrack + 3);
    if (hit == all + size) break;
    i = static_cast<size_t>(hit - all);
    if (m_nChannelNum >= kTrackCount) return rc::kErrTooManyTracks;
    if (i + kMtrStatusHigh >= size || i + kMtrStatusLow >= size) return rc::kErrStatusPastEnd;
    r.seek(i + kMtrStatusHigh);
    const uint8_t a = r.u8();
    const uint8_t b = r.u8();
    const int k = m_nChannelNum;
    const bool vib[4] = {(a & kVibHighNibble) != 0, (a & kVibLowNibble) != 0,
                         (b & kVibHighNibble) != 0, (b & kVibLowNibble) != 0};
    for (int c = 0; c < 4; ++c) {
      if (vib[c]) m_nVibStatus[k + c] = 1;
      m_nTrackValid[k + c] = 1;
    }
    m_nChannelNum += 4;
    i += kMtrNextScan;
  }
  return rc::kOk;
}

bool CMMFInfo::_UpdateCRCValue() {
  if (m_MMFImage.empty() || m_dwMMFSize <= 2 || m_MMFImage.size() != m_dwMMFSize) return false;
  const uint32_t body = m_dwMMFSize - 2;
  const uint16_t crc = _CaculateCRC(m_MMFImage.data(), body);
  return PokeByte(m_MMFImage, body, static_cast<uint8_t>(crc >> 8)) &&
         PokeByte(m_MMFImage, body + 1, static_cast<uint8_t>(crc & 0xFF));
}

int CMMFInfo::_ApplyCopyStatusChanged(unsigned char status) {
  if (m_nMIDISupport) return rc::kOk;
  if (m_MMFImage.empty()) return rc::kErrNoImage;
  int found = _SearchLabel(kLabelCnti, 0);
  if (found < 0) return rc::kErrChecksum;
  const size_t p = static_cast<size_t>(found - 1);
  // A "CNTI" too close to the end has no copy status byte to patch.
  if (!PokeByte(m_MMFImage, p + kCntiCopyStatus, status)) return rc::kErrChecksum;
  return _UpdateCRCValue() ? rc::kOk : rc::kErrCrcRewrite;
}

int CMMFInfo::_ApplyMA2LedChanged(int channel) {
  if (m_nMIDISupport) return rc::kOk;
  if (m_MMFImage.empty()) return rc::kErrNoImage;
  const uint8_t value = static_cast<uint8_t>(channel & 0xFF);
  int found = _SearchLabel(kLabelLed, 0);
  if (found >= 0) {
    // Written one byte past where parsing reads the channel. Kept on purpose: images already
    // patched this way must keep reading back the same.
    const size_t p = static_cast<size_t>(found - 1);
    PokeByte(m_MMFImage, p + std::strlen(kLabelLed) + 1, value);
  } else {
    found = _SearchLabel(kLabelCnti, 0);
    if (found < 0) return rc::kErrNoCnti;
    const size_t q = static_cast<size_t>(found - 1);
    const size_t split = q + kCntiOptionData;
    // The label goes after the fixed contents-info bytes; a chunk cut short before them has no
    // place for it.
    if (split > m_MMFImage.size()) return rc::kErrNoCnti;
    hs::ByteReader r(m_MMFImage.data(), m_MMFImage.size());
    std::vector<unsigned char> grown;
    try {
      hs::ByteWriter w;
      w.reserve(m_MMFImage.size() + 5);
      w.bytes(r.bytes(split), split);
      w.bytes(kLabelLed, 3);
      w.u8(value);
      w.u8(',');
      w.bytes(r.cursor(), r.remaining());
      grown = w.take();
    } catch (const std::bad_alloc&) {
      return rc::kErrNoMemory;
    }
    // Only the low byte of each size field moves, wrapping without carry; kept on purpose so that
    // patched images stay byte-identical to those written before.
    for (size_t at : {kFileSizeLowByte, q + kCntiSizeLowByte}) {
      bool ok = false;
      const uint8_t low = PeekByte(grown, at, &ok);
      if (ok) PokeByte(grown, at, static_cast<uint8_t>(low + 5));
    }
    m_MMFImage.swap(grown);
    m_dwMMFSize += 5;
  }
  return _UpdateCRCValue() ? rc::kOk : rc::kErrCrcRewrite;
}

int CMMFInfo::_ApplyMA2VibChanged(int track, int on) {
  (void)on;  // the file bit is only ever set
  if (m_nMIDISupport) return rc::kOk;
  if (m_MMFImage.empty()) return rc::kErrNoImage;
  if (!ValidTrackIndex(track)) return rc::kErrTrack;
  const int n = track / 4 + 1;
  int start = 3;
  size_t p = 0;
  for (int i = 0; i < n; ++i) {
    int found = _SearchLabel(kLabelScoreTrack, start);
    if (found < 0) return rc::kErrTrack;
    p = static_cast<size_t>(found - 1);
    start = static_cast<int>(p + 4);
  }
  bool ok = false;
  if (PeekByte(m_MMFImage, p + kMtrNumber, &ok) != n || !ok) return rc::kErrTrackNumber;
  const size_t at = p + (track % 4 < 2 ? kMtrStatusHigh : kMtrStatusLow);
  const uint8_t mask = track % 2 == 0 ? kVibHighNibble : kVibLowNibble;
  const uint8_t old = PeekByte(m_MMFImage, at, &ok);
  if (!ok || !PokeByte(m_MMFImage, at, static_cast<uint8_t>(old | mask)))
    return rc::kErrStatusPastEnd;
  return _UpdateCRCValue() ? rc::kOk : rc::kErrCrcRewrite;
}

int CMMFInfo::_SaveOutputFile(CString path, const unsigned char* data, unsigned long size) {
  if (path.IsEmpty()) return rc::kErrPath;
  if (!data || size == 0) return rc::kErrNoImage;
  std::FILE* f = std::fopen(path.c_str(), "w+b");
  if (!f) return rc::kErrCreate;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  return rc::kOk;
}

int CMMFInfo::CloseMMF(int save) {
  if (m_bModified && save && !m_nMIDISupport) SaveMMF(nullptr);
  _InitVariables();
  return rc::kOk;
}

int CMMFInfo::SaveMMF(const char* path) {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (!m_bModified) return rc::kOk;
  const CString target = path ? CString(path) : m_strFilePath;
  int result =
      _SaveOutputFile(target, m_MMFImage.empty() ? nullptr : m_MMFImage.data(), m_dwMMFSize);
  if (result == rc::kOk) m_bModified = 0;
  return result;
}

int CMMFInfo::InitMIDISupport(int type) {
  if (type != 2 && type != 3) return rc::kErrType;
  CloseMMF(0);
  m_nMMFType = type;
  m_nMIDISupport = 1;
  for (int i = 0; i < kTrackCount; ++i) m_nTrackValid[i] = 1;
  m_bOpened = 1;
  return rc::kOk;
}

int CMMFInfo::IsOpened() const {
  return m_bOpened;
}

int CMMFInfo::IsModified() const {
  return m_bOpened ? m_bModified : 0;
}

int CMMFInfo::GetMMFType() const {
  return m_nMMFType;
}

unsigned long CMMFInfo::GetMMFSize() const {
  return m_nMIDISupport ? 0 : m_dwMMFSize;
}

unsigned char* CMMFInfo::GetMMFBuffer() {
  if (m_nMIDISupport || m_MMFImage.empty()) return nullptr;
  return m_MMFImage.data();
}

int CMMFInfo::IsValidTrack(int track) const {
  return ValidTrackIndex(track) ? m_nTrackValid[track] : 0;
}

int CMMFInfo::GetADPCMNum() const {
  return m_nADPCMNum;
}

int CMMFInfo::ReleaseMMFBuffer() {
  return 0;
}

unsigned char CMMFInfo::GetCopyStatus() const {
  return m_bOpened ? m_byteCopyStatus : static_cast<unsigned char>(rc::kErrNotOpen);
}

int CMMFInfo::SetCopyStatus(unsigned char status) {
  if (!m_bOpened) return rc::kErrNotOpen;
  int result = _ApplyCopyStatusChanged(status);
  if (result != rc::kOk) return result;
  m_byteCopyStatus = status;
  m_bModified = 1;
  return rc::kOk;
}

int CMMFInfo::GetMA2LedStatus(int* channel) const {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (m_nMMFType != 2) return rc::kErrType;
  if (channel) *channel = m_nMA2LedChannel;
  return rc::kOk;
}

int CMMFInfo::SetMA2LedStatus(int channel) {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (channel < -1 || channel >= kTrackCount) return rc::kErrLedChannel;
  int result = _ApplyMA2LedChanged(channel);
  if (result != rc::kOk) return result;
  m_nMA2LedChannel = channel;
  m_bModified = 1;
  return rc::kOk;
}

int CMMFInfo::GetTrackLedStatus(int track, int* on) const {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (on) *on = (m_nMMFType != 3 && m_nMA2LedChannel == track) ? 1 : 0;
  return rc::kOk;
}

int CMMFInfo::GetVibStatus(int track, int* on) const {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (!ValidTrackIndex(track)) return rc::kErrTrack;
  if (!m_nTrackValid[track]) {
    if (on) *on = 0;
    return rc::kErrTrack;
  }
  if (on) *on = m_nVibStatus[track];
  return rc::kOk;
}

int CMMFInfo::GetMA3LedStatus(int track, int* on) const {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (!ValidTrackIndex(track)) return rc::kErrTrack;
  if (!m_nTrackValid[track]) {
    if (on) *on = 0;
    return rc::kErrTrack;
  }
  if (on) *on = m_nMA3LedStatus[track];
  return rc::kOk;
}

int CMMFInfo::SetVibStatus(int track, int on) {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (!ValidTrackIndex(track) || !m_nTrackValid[track]) return rc::kErrTrack;
  int result = _ApplyMA2VibChanged(track, on);
  if (result != rc::kOk) return result;
  m_nVibStatus[track] = on;
  m_bModified = 1;
  return rc::kOk;
}

int CMMFInfo::SetMA3LedStatus(int track, int on) {
  if (!m_bOpened) return rc::kErrNotOpen;
  if (!ValidTrackIndex(track) || !m_nTrackValid[track]) return rc::kErrTrack;
  m_nMA3LedStatus[track] = on;
  m_bModified = 1;
  return rc::kOk;
}
