#pragma once

#include <cstdint>
#include <vector>

#include "handset/platform/Strings.h"

/// One header of an MMS PDU or of one of its parts, as it was read.
struct CMmsHeaderField {
  /// The field code without its 0x80 bit (an MMS header code for message headers, a WAP header
  /// code for part headers), or -1 for a header sent with a textual name.
  int m_nCode = -1;
  CString m_sName;   ///< "Subject", "X-Mms-Expiry", "Content-Location", or the textual name
  CString m_sValue;  ///< the value as UTF-8 text for display
  std::vector<uint8_t> m_raw;  ///< the value's encoded bytes as they were sent
};
