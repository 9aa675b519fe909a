#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "handset/messaging.h"

namespace {

// A message of about 300 KB as phones send it: a presentation, three pictures and a text.
CMmsMessage LargeMessage() {
  CMmsMessage m;
  m.m_lstTo.AddTail("+491701234567");
  m.m_lstCc.AddTail("friend@example.org");
  m.m_sSubject = "Holiday pictures \xE2\x98\x80";
  const std::string smil =
      "<smil><body><par><img src=\"p1.jpg\"/><text src=\"t.txt\"/></par>"
      "<par><img src=\"p2.jpg\"/></par><par><img src=\"p3.jpg\"/></par></body></smil>";
  m.GetBody().CreateMediaObject("pres.smil", smil.data(), static_cast<uint32_t>(smil.size()));
  for (int i = 1; i <= 3; ++i) {
    std::vector<uint8_t> jpeg(100 * 1024);
    jpeg[0] = 0xFF, jpeg[1] = 0xD8, jpeg[2] = 0xFF;
    for (size_t k = 3; k < jpeg.size(); ++k) jpeg[k] = static_cast<uint8_t>(k * 131 + i);
    std::string name = "p" + std::to_string(i) + ".jpg";
    m.GetBody().CreateMediaObject(name.c_str(), jpeg.data(), static_cast<uint32_t>(jpeg.size()));
  }
  m.GetBody().CreateMediaObject("t.txt", "Greetings from the coast", 24);
  return m;
}

void BM_MmsEncode300K(benchmark::State& state) {
  CMmsMessage m = LargeMessage();
  std::vector<uint8_t> pdu;
  for (auto _ : state) {
    MmsEncodePdu(m, &pdu);
    benchmark::DoNotOptimize(pdu.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * pdu.size()));
}
BENCHMARK(BM_MmsEncode300K);

void BM_MmsDecode300K(benchmark::State& state) {
  std::vector<uint8_t> pdu;
  MmsEncodePdu(LargeMessage(), &pdu);
  for (auto _ : state) {
    CMmsMessage m;
    benchmark::DoNotOptimize(MmsDecodePdu(pdu.data(), pdu.size(), &m));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * pdu.size()));
}
BENCHMARK(BM_MmsDecode300K);

// Sizing never touches the media bytes, so it should not grow with them.
void BM_MmsSize300K(benchmark::State& state) {
  CMmsMessage m = LargeMessage();
  for (auto _ : state) benchmark::DoNotOptimize(MmsCalcSendReqPduSize(m));
}
BENCHMARK(BM_MmsSize300K);

}  // namespace
