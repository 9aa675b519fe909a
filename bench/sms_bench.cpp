#include <benchmark/benchmark.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bench/BenchUtil.h"
#include "handset/messaging.h"

namespace {

// A 160-character GSM text with extension-table characters among plain ones.
std::string Text160() {
  std::string t;
  while (t.size() < 160) t += "Meet at 7 [room 12] ~ bring 5\xE2\x82\xAC ";
  // 160 characters: cut at a character boundary (the euro sign is three bytes).
  std::string out;
  int chars = 0;
  for (size_t i = 0; i < t.size() && chars < 160; ++chars) {
    size_t n = static_cast<unsigned char>(t[i]) >= 0xE0 ? 3 : 1;
    out += t.substr(i, n);
    i += n;
  }
  return out;
}

// Three segments of EMS: text with a sound, a melody, a 16 x 16 picture, an animation and a
// formatting range.
void FillEms(CSmContext* ctx) {
  CSmContent* c = ctx->GetContent();
  c->AddItem(new CSmText(std::string(100, 'a').c_str()), false, true);
  c->AddItem(new CSmSound(4), false, true);
  c->AddItem(new CSmText(std::string(100, 'b').c_str()), false, true);
  CSmSound* melody = new CSmSound(-1);
  melody->SetData(
      "BEGIN:IMELODY\r\nVERSION:1.2\r\nFORMAT:CLASS1.0\r\nMELODY:c2d2e2f2g2\r\nEND:IMELODY");
  c->AddItem(melody, false, true);
  c->AddItem(new CSmText(std::string(90, 'c').c_str()), false, true);
  CBmpWrp bmp(16, 16);
  for (int i = 0; i < 16; ++i) bmp.SetPixel(i, i, true);
  CSmPicture* pic = new CSmPicture;
  pic->SetData(bmp);
  c->AddItem(pic, false, true);
  c->AddItem(new CSmAnimation(6), false, true);
  CSmTextFormat* f = new CSmTextFormat;
  f->SetPosition(10);
  f->m_nEffectLen = 40;
  c->AddItem(f, false, false);
}

void BM_SmsSizeText160(benchmark::State& state) {
  CSmContext ctx;
  ctx.GetContent()->AddItem(new CSmText(Text160().c_str()), false, true);
  for (auto _ : state) benchmark::DoNotOptimize(ctx.CalcSmUsedCount());
}
BENCHMARK(BM_SmsSizeText160);

void BM_SmsEncodeText160(benchmark::State& state) {
  CSmContext ctx;
  ctx.GetContent()->AddItem(new CSmText(Text160().c_str()), false, true);
  std::vector<SM_UD_SEGMENT> segs;
  for (auto _ : state) benchmark::DoNotOptimize(ctx.EncodeUserDataPdu(1, &segs));
}
BENCHMARK(BM_SmsEncodeText160);

void BM_SmsSizeEms3Segments(benchmark::State& state) {
  CSmContext ctx;
  FillEms(&ctx);
  if (ctx.CalcSmUsedCount() != 3) return state.SkipWithError("the EMS sample is not 3 segments");
  for (auto _ : state) benchmark::DoNotOptimize(ctx.CalcSmUsedCount());
}
BENCHMARK(BM_SmsSizeEms3Segments);

void BM_SmsEncodeEms3Segments(benchmark::State& state) {
  CSmContext ctx;
  FillEms(&ctx);
  std::vector<SM_UD_SEGMENT> segs;
  for (auto _ : state) benchmark::DoNotOptimize(ctx.EncodeUserDataPdu(1, &segs));
}
BENCHMARK(BM_SmsEncodeEms3Segments);

// Decodes the segments of `ctx` and reassembles them into a new context.
void DecodeSegments(const std::vector<SM_UD_SEGMENT>& segs) {
  CSmContext out;
  CSmAssemble a;
  a.SetTarget(1, static_cast<int>(segs.size()), nullptr);
  for (size_t i = 0; i < segs.size(); ++i) {
    CSmUserData ud;
    ud.Decode(segs[i].nDcs, segs[i].bUdhi, segs[i].nUdl, segs[i].abUd, segs[i].nLength);
    a.AddPart(static_cast<int>(i) + 1, ud.GetText().c_str(), ud.GetUd140().data(), false);
  }
  a.DoAssemble(&out);
  benchmark::DoNotOptimize(out.GetContent()->GetItemCount());
}

void BM_SmsDecodeText160(benchmark::State& state) {
  CSmContext ctx;
  ctx.GetContent()->AddItem(new CSmText(Text160().c_str()), false, true);
  std::vector<SM_UD_SEGMENT> segs;
  ctx.EncodeUserDataPdu(1, &segs);
  for (auto _ : state) DecodeSegments(segs);
}
BENCHMARK(BM_SmsDecodeText160);

void BM_SmsDecodeEms3Segments(benchmark::State& state) {
  CSmContext ctx;
  FillEms(&ctx);
  std::vector<SM_UD_SEGMENT> segs;
  ctx.EncodeUserDataPdu(1, &segs);
  for (auto _ : state) DecodeSegments(segs);
}
BENCHMARK(BM_SmsDecodeEms3Segments);

// Every PDU line of the sample corpus: parsed, user data taken apart, turned into content.
void BM_SmsDecodePduCorpus(benchmark::State& state) {
  std::vector<std::string> lines;
  for (const std::string& p : hs::bench::CorpusFiles("pdu")) {
    std::vector<uint8_t> b = hs::bench::ReadBytes(p);
    std::istringstream in(std::string(b.begin(), b.end()));
    for (std::string l; std::getline(in, l);)
      if (!l.empty() && l[0] != '#') lines.push_back(l);
  }
  if (lines.empty()) return state.SkipWithError("no PDU corpus");
  for (auto _ : state) {
    for (const std::string& l : lines) {
      CSmPdu pdu;
      CSmUserData ud;
      if (pdu.ParseHex(l.c_str(), nullptr) != 0 || !pdu.m_bHasUd || pdu.DecodeUserData(&ud) != 0)
        continue;
      CSmContext ctx;
      ud.ToContent(&ctx);
      benchmark::DoNotOptimize(ctx.GetContent()->GetItemCount());
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(lines.size()));
}
BENCHMARK(BM_SmsDecodePduCorpus);

}  // namespace
