#include "handset/audio/Amr.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>

#include "audio/amr/AmrFrames.h"
#include "handset/platform/Streams.h"
#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

const char CAmr::SingleChannelAmrNBHeader[] = "#!AMR\n";
const char CAmr::SingleChannelAmrWBHeader[] = "#!AMR-WB\n";
const char CAmr::MultipleChannelAmrNBHeader[] = "#!AMR_MC1.0\n";
const char CAmr::MultipleChannelAmrWBHeader[] = "#!AMR-WB_MC1.0\n";
const short CAmr::NBspeechBits[16] = {95, 103, 118, 134, 148, 159, 204, 244,
                                      39, 43,  38,  37,  -1,  -1,  -1,  0};

namespace {

struct HeaderInfo {
  const char* text;
  uint32_t length;
  // Bytes of a file of this type that are not frame data. For the multichannel types this is
  // 28 more than header plus description: such files lose their last 28 bytes on loading.
  uint32_t notLoaded;
};

const HeaderInfo kHeaders[4] = {
    {CAmr::SingleChannelAmrNBHeader, 6, 6},
    {CAmr::SingleChannelAmrWBHeader, 9, 9},
    {CAmr::MultipleChannelAmrNBHeader, 12, 44},
    {CAmr::MultipleChannelAmrWBHeader, 15, 47},
};

}  // namespace

namespace hs {
namespace amr {

size_t CountFrames(const uint8_t* data, size_t size, uint32_t channels) {
  if (!data || !size || !channels) return 0;
  // Step sizes by whole header byte: one table load per step keeps long files fast to count.
  std::array<size_t, 256> steps;
  for (int b = 0; b < 256; ++b) steps[b] = size_t{channels} * FrameSize(static_cast<uint8_t>(b));
  ByteReader r(data, size);
  size_t frames = 0;
  while (!r.atEnd()) {
    r.skip(steps[r.peek8()]);
    ++frames;
  }
  return frames;
}

}  // namespace amr
}  // namespace hs

CAmr::CAmr() : m_nType(0), m_nChannels(0) {}

CAmr::~CAmr() = default;

bool CAmr::IsAmrFormat(const char* path, short& type) {
  tarvox::cpp::FileReader file(path);
  if (!file.isOpen()) return false;
  char head[15] = {0};
  unsigned long got = file.read(head, sizeof head);
  for (int t = 0; t < 4; ++t) {
    if (got >= kHeaders[t].length && std::memcmp(head, kHeaders[t].text, kHeaders[t].length) == 0) {
      type = static_cast<short>(t + 1);
      return true;
    }
  }
  return false;
}

bool CAmr::Load(const char* path) {
  short type = 0;
  if (!IsAmrFormat(path, type)) return false;
  tarvox::cpp::FileReader file(path);
  if (!file.isOpen()) return false;
  const HeaderInfo& h = kHeaders[type - 1];
  if (file.size() <= h.notLoaded) return false;
  int channels = 1;
  file.advance(h.length);
  if (type >= 3) {
    unsigned char desc[4];
    if (file.read(reinterpret_cast<char*>(desc), 4) != 4) return false;
    hs::ByteReader r(desc, 4);
    channels = static_cast<int>(r.u32be() & 0x0F);
  }
  uint32_t size = static_cast<uint32_t>(file.size() - h.notLoaded);
  std::unique_ptr<unsigned char[]> data(new unsigned char[size]);
  if (file.read(reinterpret_cast<char*>(data.get()), size) != size) return false;
  m_Data.Attach(data.release(), size);
  m_nType = type;
  m_nChannels = channels;
  return true;
}

bool CAmr::Save(const char* path) const {
  if (!m_Data.GetData() || !m_Data.GetSize() || m_nType < 1 || m_nType > 4 || !path) return false;
  const HeaderInfo& h = kHeaders[m_nType - 1];
  hs::ByteWriter head;
  head.bytes(h.text, h.length);
  if (m_nType >= 3) head.u32be(static_cast<uint32_t>(m_nChannels) & 0x0F);
  std::FILE* f = std::fopen(path, "w+b");
  if (!f) return false;
  bool ok = std::fwrite(head.data(), 1, head.size(), f) == head.size() &&
            std::fwrite(m_Data.GetData(), 1, m_Data.GetSize(), f) == m_Data.GetSize();
  ok = std::fclose(f) == 0 && ok;
  return ok;
}

bool CAmr::ConstructAmrObject(unsigned short type, unsigned short channels, void* data,
                              unsigned long size, CAmr& out, bool copy) {
  out.m_nType = type;
  out.m_nChannels = channels;
  uint32_t n = static_cast<uint32_t>(size);
  if (copy) {
    CByteBlock block(data ? n : 0);
    block.CopyIn(data, 0, n);
    block.HandOver(out.m_Data);
  } else {
    out.m_Data.Attach(data, n);
  }
  return true;
}

void CAmr::Release() {
  m_Data.Free();
  m_nType = 0;
  m_nChannels = 0;
}

unsigned long CAmr::GetNumSamples() const {
  if (m_nChannels <= 0) return 0;
  return static_cast<unsigned long>(
      hs::amr::CountFrames(m_Data.GetData(), m_Data.GetSize(), static_cast<uint32_t>(m_nChannels)));
}

double CAmr::GetAmrLength() const {
  if (!m_Data.GetData()) return 0.0;
  return static_cast<double>(GetNumSamples()) * 0.02;
}

unsigned long CAmr::GetSingleChannelSize() const {
  if (!m_Data.GetData() || m_nChannels <= 0) return 0;
  return m_Data.GetSize() / static_cast<unsigned long>(m_nChannels);
}

bool CAmr::GetSingleChannel(unsigned short channel, char* out) const {
  if (!m_Data.GetData() || !m_Data.GetSize() || m_nChannels < 1 || !out ||
      channel > m_nChannels - 1)
    return false;
  const unsigned long capacity = GetSingleChannelSize();
  hs::ByteReader r(m_Data.GetData(), m_Data.GetSize());
  unsigned long written = 0;
  while (!r.atEnd()) {
    size_t start = r.tell();
    uint32_t s = hs::amr::FrameSize(r.peek8());
    // A step of one-byte frames keeps its first byte whichever channel is asked for.
    size_t from = s >= 2 ? start + static_cast<size_t>(s) * channel : start;
    size_t take = s >= 2 ? s : 1;
    hs::ByteReader frame(m_Data.GetData(), m_Data.GetSize());
    const uint8_t* src = frame.seek(from) ? frame.bytes(take) : nullptr;
    if (!src || take > capacity - written) return false;
    std::memcpy(out + written, src, take);
    written += static_cast<unsigned long>(take);
    r.skip(static_cast<size_t>(m_nChannels) * s);
  }
  return true;
}

unsigned long CAmr::GetEstiFileSize(unsigned long milliseconds) {
  return 6 + 32 * static_cast<unsigned long>(static_cast<double>(milliseconds) * 0.05);
}
