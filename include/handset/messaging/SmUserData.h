#pragma once

#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/messaging/SmMedia.h"
#include "handset/platform/Strings.h"

class CSmContext;

/// One segment of user data ready for a TPDU (3GPP TS 23.040): TP-DCS, TP-UDHI, TP-UDL and the
/// TP-UD octets.
struct HANDSET_API SM_UD_SEGMENT {
  unsigned char nDcs = 0;        ///< 0x00 GSM 7-bit or 0x08 UCS-2, with message class bits
  bool bUdhi = false;            ///< the user data begins with a header
  int nUdl = 0;                  ///< septets for GSM 7-bit, octets otherwise
  int nLength = 0;               ///< octets of `abUd` in use
  unsigned char abUd[140] = {};  ///< header (length octet first) and text
};

/// The alphabet of a data coding scheme (TS 23.038).
enum ESmAlphabet : int { SMALPHA_GSM7 = 0, SMALPHA_8BIT = 1, SMALPHA_UCS2 = 2 };

/// Received user data taken apart: the header, and the text in the ANSI code page (UTF-8 on
/// POSIX), or the raw octets of 8-bit data.
class HANDSET_API CSmUserData {
 public:
  /// Reads the alphabet, the compression flag and the message class (-1 for none) from a data
  /// coding scheme. Reserved codings read as GSM 7-bit.
  static ESmAlphabet AlphabetOfDcs(unsigned char dcs, bool* compressed, int* msgClass);

  /// Takes apart `length` octets of user data with length `udl` (septets for GSM 7-bit) under
  /// `dcs` and `udhi`. Returns 0 or an `hs::sms` code: the length beyond 160 septets or 140
  /// octets, octets missing, a header longer than the data, compressed data.
  int Decode(unsigned char dcs, bool udhi, int udl, const unsigned char* ud, int length);

  ESmAlphabet GetAlphabet() const { return m_eAlphabet; }
  /// The header, its length octet first; empty when there is none.
  const std::vector<uint8_t>& GetHeader() const { return m_header; }
  /// The decoded text (8-bit data gives text only when every octet is printable ASCII).
  const CString& GetText() const { return m_text; }
  /// The octets after the header (8-bit data as it came; packed septets for GSM 7-bit).
  const std::vector<uint8_t>& GetBody() const { return m_body; }
  /// Septets (GSM 7-bit) or octets of the text.
  int GetTextLength() const { return m_nTextLength; }
  /// Fill bits between the header and a GSM 7-bit text.
  int GetFillBits() const { return m_nFillBits; }
  /// The header padded with zeros to 140 octets, as `CSmContext::ConstructContent` and
  /// `CSmAssemble::AddPart` take it.
  std::vector<uint8_t> GetUd140() const;
  /// Concatenation: reference, total and sequence number from an element 0x00 or 0x08. False
  /// when the header has none (or a malformed one).
  bool GetConcat(int* ref, int* total, int* seq) const;
  /// Appends this segment to the content of `ctx` (see `CSmContext::ConstructContent`); 8-bit data
  /// that is not text is added as a `CSmSource` item.
  bool ToContent(CSmContext* ctx) const;

 private:
  ESmAlphabet m_eAlphabet = SMALPHA_GSM7;
  std::vector<uint8_t> m_header;
  std::vector<uint8_t> m_body;
  CString m_text;
  int m_nTextLength = 0;
  int m_nFillBits = 0;
};
