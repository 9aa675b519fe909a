#pragma once

#include <string>

#include "handset/messaging/MmsMessage.h"
#include "messaging/mms/WspWriter.h"

namespace hs {
namespace mms {

/// Writes `msg` as a PDU to `sink`; with `asSendReq` the message type is m-send-req whatever
/// `msg` says. Data bytes of the parts go to the sink in place, so a counting sink sizes a
/// message without copying it. False when a part or the whole passes 4 GB - 1.
bool EncodePdu(const CMmsMessage& msg, PduSink& sink, bool asSendReq);

/// An address as sent: a phone number (digits with an optional leading '+', formatting blanks,
/// dashes, dots and brackets removed) gets "/TYPE=PLMN"; anything else is sent as it is.
std::string AddressForSending(const std::string& address);

/// The Content-ID a part is sent with: the one set, in angle brackets, or one made from its
/// Content-Location.
std::string ContentIdForSending(const CMmsMediaObj& obj);

}  // namespace mms
}  // namespace hs
