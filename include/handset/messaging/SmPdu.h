#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/messaging/SmUserData.h"
#include "handset/pim/CalendarInfo.h"
#include "handset/platform/Strings.h"

/// Kind of a short-message TPDU, seen from the phone: what it receives or keeps.
enum ESmPduType : int {
  SMPDU_DELIVER = 0,        ///< TP-MTI 0: a received message
  SMPDU_SUBMIT = 1,         ///< TP-MTI 1: a message to send (or kept as sent)
  SMPDU_STATUS_REPORT = 2,  ///< TP-MTI 2: a delivery report
};

/// One short-message TPDU (3GPP TS 23.040) as AT commands show it in PDU mode, optionally after
/// the service-centre address. Fields are public like those of a plain record.
class HANDSET_API CSmPdu {
 public:
  /// Reads one PDU-mode line of hex digits, with or without the service-centre part. The reading
  /// that accounts for every octet wins; failing that, one that leaves only octets after the user
  /// data (`m_nExtraOctets`, ignored); failing that, the service-centre reading's error is
  /// returned. Blanks and quotes are ignored. Returns 0 or an `hs::sms` code; `detail` (may be
  /// null) then says what is wrong.
  int ParseHex(const char* line, CString* detail);
  /// Reads `size` octets; `withSmsc` when they begin with the service-centre address. Octets left
  /// after the user data give `hs::sms::kErrTrailing` with every field read.
  int Parse(const uint8_t* data, size_t size, bool withSmsc, CString* detail);
  /// Takes the user data apart (see `CSmUserData::Decode`); 0 or an `hs::sms` code.
  int DecodeUserData(CSmUserData* out) const;

  /// The AT+CMGS form of an SMS-SUBMIT carrying `seg` to `to` ("+" and digits; others are
  /// ignored; empty for no address): service-centre length octet 0, then the TPDU without a
  /// validity period. `*tpduLength` (may be null) gets the TPDU's octets, the length AT+CMGS
  /// takes. Empty when `to` has more than 20 digits.
  static std::vector<uint8_t> BuildSubmit(const char* to, int messageRef, const SM_UD_SEGMENT& seg,
                                          int* tpduLength);

  ESmPduType m_eType = SMPDU_DELIVER;
  CString m_strSmsc;        ///< service centre ("+" for international numbers)
  bool m_bHasSmsc = false;  ///< the line carried the service-centre part
  CString m_strAddress;     ///< originator, destination or recipient
  unsigned char m_nAddressType = 0x81;
  int m_nMessageRef = 0;  ///< TP-MR (submit and status report)
  unsigned char m_nPid = 0;
  unsigned char m_nDcs = 0;
  int m_nVpFormat = 0;        ///< TP-VPF of a submit: 0 none, 1 enhanced, 2 relative, 3 absolute
  std::vector<uint8_t> m_vp;  ///< the validity period octets
  bool m_bHasTime = false;
  ME_CAL_DATE m_calTime;       ///< service-centre time stamp
  int m_nTzQuarters = 0;       ///< its zone in quarter hours east of UTC
  ME_CAL_DATE m_calDischarge;  ///< status report: discharge time
  int m_nDischargeTz = 0;
  int m_nStatus = -1;  ///< status report: TP-ST
  bool m_bUdhi = false;
  bool m_bHasUd = false;  ///< a status report may have no user data
  int m_nUdl = 0;
  std::vector<uint8_t> m_ud;
  int m_nExtraOctets = 0;  ///< octets after the user data, ignored
};
