#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "handset/messaging.h"

namespace {

// Everything an item offers on stored data: sizes, elements, copies and persistence.
void Exercise(CSmContent& content) {
  CSmText text("");
  content.GetFullText(&text);
  for (CSmMedia* m : content.GetList()) {
    m->EstimateEncodeSize(true, SMS_ENC_AUTO);
    unsigned char buf[300];
    unsigned char* p = buf;
    int room = sizeof buf;
    m->Encoder(SMS_ENC_AUTO, p, room);
    std::unique_ptr<CSmMedia> copy(m->Clone());
    content.GetTextPosition(m->GetPosition());
  }
  CPackageBlk blk;
  content.PackData("c", blk);
  std::vector<uint8_t> buf;
  CArchive ar(&buf, CArchive::store);
  content.Save(ar);
  CSmContext ctx;
  *ctx.GetContent() = content;
  std::vector<SM_UD_SEGMENT> segs;
  ctx.EncodeUserDataPdu(1, &segs);
}

}  // namespace

// Stored content: the bytes as an archive (CSmContent::Load) and as a package block
// (CSmContent::UnpackData and CSmContext::UnpackData).
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CArchive ar(data, size);
  CSmContent loaded;
  loaded.Load(ar);
  Exercise(loaded);
  CUnpackageBlk blk;
  if (blk.Unpack(data, size)) {
    CSmContent unpacked;
    unpacked.UnpackData("c", blk);
    Exercise(unpacked);
    CSmContext ctx;
    ctx.UnpackData("", blk);
    Exercise(*ctx.GetContent());
  }
  return 0;
}
