#include "handset/audio/Aac.h"

#include <cstring>
#include <memory>

#include "audio/aac/AacDecoreApi.h"
#include "audio/aac/AdtsFrames.h"
#include "handset/platform/MessageBox.h"
#include "handset/platform/Resources.h"
#include "handset/platform/Streams.h"
#include "platform/ByteReader.h"
#include "platform/CodecModules.h"
#include "platform/Os.h"

namespace hs {
namespace aac {

size_t CountAdtsFrames(const uint8_t* data, size_t size) {
  ByteReader r(data, size);
  size_t frames = 0;
  size_t u = 0;
  while (u < size) {
    r.seek(u);
    // Junk between frames is passed over to the next 0xFF in one step.
    const void* ff = std::memchr(r.cursor(), 0xFF, r.remaining());
    if (!ff) break;
    u += static_cast<size_t>(static_cast<const uint8_t*>(ff) - r.cursor());
    r.seek(u);
    // Header bytes missing at the end of the data read as zero: no sync, or a length that ends
    // the scan.
    ByteReader h = r.sub(6);
    uint8_t b[6];
    for (uint8_t& x : b) x = h.u8();
    if (IsAdtsSync(b[0], b[1])) {
      ++frames;
      size_t length = (size_t{b[3] & 3u} << 11) + (size_t{b[4]} << 3) + (b[5] >> 5);
      // A zero length would never move on; valid frames are at least 7 bytes.
      u += length ? length : 1;
    } else {
      ++u;
    }
  }
  return frames;
}

}  // namespace aac
}  // namespace hs

namespace {

const int kSampleRates[16] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050,
                              16000, 12000, 11025, 8000,  0,     0,     0,     0};
const uint32_t kHeaderBytes = 100;
const uint32_t kFrameOutputPerChannel = 4096;
const uint64_t kMaxOutput = 0x7FFFFFFF;  // the length is reported as an int

AacDecoreProc Entry(void* p) {
  return reinterpret_cast<AacDecoreProc>(p);
}

// Loads the decoder module and its entry; null module when either is missing.
hs::os::Module* LoadDecoder(void** entry) {
  *entry = nullptr;
  std::unique_ptr<hs::os::Module> module(new hs::os::Module);
  if (!module->Open(hs::codec::AacModuleName())) return nullptr;
  *entry = module->Symbol("AacDecore");
  if (!*entry) return nullptr;
  return module.release();
}

void InitParam(AAC_DECORE_PARAM* p, const unsigned char* header) {
  std::memset(p, 0, sizeof *p);
  p->nVersion = 1;
  p->pHeader = header;
  p->nHeaderLen = static_cast<int32_t>(kHeaderBytes);
  p->nSampleRate = 44100;
  p->nChannels = 1;
  p->nChunkLen = 1500;
}

}  // namespace

CAac::CAac()
    : m_hDecoderLib(nullptr),
      m_pfnAacDecore(nullptr),
      m_nType(0),
      m_nChannels(0),
      m_nHeaderSkip(0),
      m_nSampleRate(0),
      m_dPlayLength(0.0),
      m_wBitRate(0) {
  m_hDecoderLib = LoadDecoder(&m_pfnAacDecore);
  if (!m_hDecoderLib) m_pfnAacDecore = nullptr;
}

CAac::~CAac() {
  delete static_cast<hs::os::Module*>(m_hDecoderLib);
}

bool CAac::IsAACDllLoad() {
  void* entry = nullptr;
  std::unique_ptr<hs::os::Module> module(LoadDecoder(&entry));
  return module && entry;
}

bool CAac::IsAACFormat(const char* path, short& type) {
  tarvox::cpp::FileReader file(path);
  if (!file.isOpen()) return false;
  const unsigned long fileSize = file.size();
  unsigned char head[kHeaderBytes] = {0};
  file.read(reinterpret_cast<char*>(head), 10);
  m_nHeaderSkip = 0;
  if (std::memcmp(head, "ID3", 3) == 0) {
    hs::ByteReader r(head, 10);
    r.skip(6);
    unsigned long size = 0;
    for (int i = 0; i < 4; ++i) size = (size << 7) | (r.u8() & 0x7Fu);
    if (fileSize <= size + 10) return false;
    file.advance(size);
    m_nHeaderSkip = size + 10;
    std::memset(head, 0, sizeof head);
    file.read(reinterpret_cast<char*>(head), 10);
  }
  if (std::memcmp(head, "ADIF", 4) == 0) {
    if (!m_pfnAacDecore) return false;
    file.read(reinterpret_cast<char*>(head) + 10, kHeaderBytes - 10);
    AAC_DECORE_PARAM param;
    InitParam(&param, head);
    void* decoder = nullptr;
    if (Entry(m_pfnAacDecore)(&decoder, AACDECORE_OPEN, &param, nullptr) != 0) return false;
    m_nChannels = param.nChannels & 0xFFFF;
    m_nSampleRate = param.nSampleRate;
    // A header without a bit rate gives no play length rather than a division by zero.
    m_dPlayLength = param.nBitRate > 0 ? static_cast<double>(fileSize) * 8.0 / param.nBitRate : 0.0;
    m_wBitRate = static_cast<uint16_t>(param.nBitRate > 0 ? param.nBitRate / 1024 : 0);
    Entry(m_pfnAacDecore)(&decoder, AACDECORE_CLOSE, nullptr, nullptr);
    type = 1;
    return true;
  }
  if (hs::aac::IsAdtsSync(head[0], head[1])) {
    m_nChannels = (head[3] >> 6) + 4 * (head[2] & 1);
    m_nSampleRate = kSampleRates[(head[2] >> 2) & 0x0F];
    type = 2;
    return true;
  }
  return false;
}

bool CAac::Load(const char* path) {
  short type = 0;
  m_Data.Free();
  m_nType = 0;
  if (!IsAACFormat(path, type)) return false;
  tarvox::cpp::FileReader file(path);
  if (!file.isOpen() || file.size() <= m_nHeaderSkip) return false;
  uint32_t size = static_cast<uint32_t>(file.size() - m_nHeaderSkip);
  file.seek(m_nHeaderSkip);
  std::unique_ptr<unsigned char[]> data(new unsigned char[size]);
  if (file.read(reinterpret_cast<char*>(data.get()), size) != size) return false;
  m_Data.Attach(data.release(), size);
  m_nType = type;
  return true;
}

unsigned long CAac::GetNumSamples() const {
  if (!m_Data.GetData() || !m_Data.GetSize()) return 0;
  if (m_nType == 2)
    return static_cast<unsigned long>(hs::aac::CountAdtsFrames(m_Data.GetData(), m_Data.GetSize()));
  if (m_nType == 1)
    return static_cast<unsigned long>(static_cast<double>(m_nSampleRate) * m_dPlayLength / 1024);
  return 0;
}

double CAac::GetAACLength() const {
  if (m_nType == 2)
    return m_nSampleRate > 0 ? static_cast<double>(GetNumSamples()) * 1024 / m_nSampleRate : 0.0;
  if (m_nType == 1) return m_dPlayLength;
  return 0.0;
}

unsigned long CAac::GetBitRate() const {
  if (m_nType == 2) {
    double seconds = GetAACLength();
    if (seconds <= 0) return 0;
    double bits = (static_cast<double>(m_Data.GetSize()) + m_nHeaderSkip) * 8;
    return static_cast<unsigned long>(bits / (seconds * 1024));
  }
  if (m_nType == 1) return m_wBitRate;
  return 0;
}

bool CAac::Decode(WAVEFORMATEX* format, unsigned char** pcm, int* length) const {
  if (!format || !pcm || !length || !m_pfnAacDecore) return false;
  const unsigned char* data = m_Data.GetData();
  const uint32_t size = m_Data.GetSize();
  // A margin of 1 % over the frame count covers streams whose count is estimated.
  const uint64_t frames = static_cast<uint64_t>(GetNumSamples() * 1.01);
  if (!data || !size || frames == 0) return false;

  CByteBlock header(kHeaderBytes);
  header.CopyIn(data, 0, size < kHeaderBytes ? size : kHeaderBytes);
  AAC_DECORE_PARAM param;
  InitParam(&param, header.GetData());
  AacDecoreProc decore = Entry(m_pfnAacDecore);
  void* decoder = nullptr;
  if (decore(&decoder, AACDECORE_OPEN, &param, nullptr) != 0) return false;
  const uint32_t channels = static_cast<uint32_t>(param.nChannels) & 0xFFFF;
  const uint32_t used = static_cast<uint32_t>(param.nHeaderUsed);
  const uint64_t outSize = uint64_t{channels} * frames * 2048;
  if (channels == 0 || used > size || outSize > kMaxOutput) {
    decore(&decoder, AACDECORE_CLOSE, nullptr, nullptr);
    return false;
  }
  std::unique_ptr<unsigned char[]> out(new unsigned char[outSize]());
  const uint32_t frameCapacity = channels * kFrameOutputPerChannel;
  std::unique_ptr<unsigned char[]> frameOut(new unsigned char[frameCapacity]);
  const uint32_t chunk = param.nChunkLen > 0 ? static_cast<uint32_t>(param.nChunkLen) : 1500;

  hs::ByteReader in(data, size);
  in.seek(used);
  const uint32_t total = size - used;
  uint32_t consumed = 0;
  uint64_t decoded = 0;
  uint32_t lastBytes = 0;
  while (consumed < total) {
    uint32_t left = total - consumed;
    AAC_DECORE_FRAME frame;
    frame.pInput = in.cursor();
    frame.nInputLen = static_cast<int32_t>(left < chunk ? left : chunk);
    frame.pOutput = frameOut.get();
    frame.nOutputBytes = 0;
    frame.nInputUsed = 0;
    bool failed = decore(&decoder, AACDECORE_DECODE, &frame, nullptr) != 0 ||
                  frame.nOutputBytes < 0 ||
                  static_cast<uint32_t>(frame.nOutputBytes) > frameCapacity;
    if (failed) {
      HsMessageBox(HsLoadString(IDS_AAC_DECODE_ERROR), "AAC", HS_MB_OK | HS_MB_ICONERROR);
      break;
    }
    uint64_t bytes = static_cast<uint32_t>(frame.nOutputBytes);
    uint64_t at = bytes * decoded;
    // Output beyond the estimate has no room; what fitted is kept.
    if (at + bytes > outSize) break;
    if (bytes) std::memcpy(out.get() + at, frameOut.get(), bytes);
    ++decoded;
    lastBytes = static_cast<uint32_t>(bytes);
    uint32_t step = frame.nInputUsed > 0 ? static_cast<uint32_t>(frame.nInputUsed) : 0;
    if (step == 0 || step > left) break;
    consumed += step;
    in.skip(step);
    if (in.startsWith("TAG", 3)) break;  // a trailing ID3v1 tag ends the audio
  }

  format->wFormatTag = 1;
  format->nChannels = static_cast<uint16_t>(channels);
  format->nSamplesPerSec = static_cast<uint32_t>(param.nSampleRate);
  format->wBitsPerSample = 16;
  format->nBlockAlign = static_cast<uint16_t>(channels * 16 / 8);
  format->nAvgBytesPerSec = format->nBlockAlign * format->nSamplesPerSec;
  format->cbSize = 0;
  *pcm = out.release();
  *length = static_cast<int>(uint64_t{lastBytes} * decoded);
  decore(&decoder, AACDECORE_CLOSE, nullptr, nullptr);
  return true;
}
