#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "handset/messaging.h"

// Received short messages: the bytes as a TPDU (with and without the service-centre part), as a
// PDU-mode hex line, and as user data under the coding, header flag and length of the first three
// bytes. Whatever decodes becomes content, which is encoded again.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CSmPdu pdu;
  CSmUserData ud;
  for (bool smsc : {true, false})
    if (pdu.Parse(data, size, smsc, nullptr) == 0 && pdu.m_bHasUd) pdu.DecodeUserData(&ud);
  pdu.ParseHex(std::string(reinterpret_cast<const char*>(data), size).c_str(), nullptr);
  if (size < 3) return 0;
  CSmContext ctx;
  if (ud.Decode(data[0], data[1] & 1, data[2], data + 3, static_cast<int>(size - 3)) == 0) {
    ud.ToContent(&ctx);
    int ref = 0, total = 0, seq = 0;
    if (ud.GetConcat(&ref, &total, &seq)) {
      CSmAssemble a;
      if (a.SetTarget(ref, total, nullptr)) {
        a.AddPart(seq, ud.GetText().c_str(), ud.GetUd140().data(), false);
        CSmContext whole;
        a.DoAssemble(&whole);
      }
    }
  }
  // The header bytes straight into the content builder as well.
  std::vector<uint8_t> raw(data + 2, data + size);
  raw.resize(140, 0);
  ctx.ConstructContent(raw.data(), "fuzz");
  std::vector<SM_UD_SEGMENT> segs;
  ctx.EncodeUserDataPdu(data[0], &segs, static_cast<ME_SMS_ENCODE>(data[1] & 2 ? 2 : -1));
  for (const SM_UD_SEGMENT& s : segs) {
    CSmUserData back;
    back.Decode(s.nDcs, s.bUdhi, s.nUdl, s.abUd, s.nLength);
  }
  return 0;
}
