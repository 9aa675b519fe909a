#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/messaging.h"

// Any bytes as an MMS PDU. What decodes is encoded again and decoded again; the encoding's
// length must match the size worked out without building it. Seeds: fuzz/seeds/mms_pdu.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CMmsMessage msg;
  if (MmsDecodePdu(data, size, &msg) != 0) return 0;
  std::vector<uint8_t> pdu;
  if (MmsEncodePdu(msg, &pdu) != 0) return 0;
  CMmsMessage again;
  if (MmsDecodePdu(pdu.data(), pdu.size(), &again) != 0) __builtin_trap();
  if (msg.m_nMessageType == MMS_M_SEND_REQ &&
      MmsCalcSendReqPduSize(msg) != static_cast<int>(pdu.size()))
    __builtin_trap();
  CCvMmsMessage record;
  record.ImportFromMessage(again);
  CPackageBlk blk;
  record.PackData("r.", blk, true);
  CUnpackageBlk un(blk);
  CCvMmsMessage back;
  back.UnpackData("r.", un, true);
  return 0;
}
