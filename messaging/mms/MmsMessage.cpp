#include "handset/messaging/MmsMessage.h"

#include "messaging/mms/WspTables.h"

void CMmsMessage::Reset() {
  *this = CMmsMessage();
}

const char* MmsMessageTypeName(int type) {
  return hs::mms::MmsTokenName(hs::mms::kFieldMessageType, type);
}
