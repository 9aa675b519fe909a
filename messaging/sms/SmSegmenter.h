#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "handset/messaging/SmContent.h"
#include "handset/messaging/SmUserData.h"

namespace hs {
namespace sms {

/// Lays a message's content out in user-data segments: the text split so that no escape pair or
/// surrogate pair is cut, each EMS element in the segment where its text position falls (an
/// element that does not fit starts a new segment), formatting ranges split at segment ends, and
/// a concatenation element (8-bit reference) when more than one segment is needed.
class Segmenter {
 public:
  Segmenter(const CSmContent& content, ME_SMS_ENCODE enc, int maxOctets);
  /// Lays the content out; the number of segments, 0 with `Error()` set when it cannot be sent.
  int Run(int ref, unsigned char dcsClassBits, std::vector<SM_UD_SEGMENT>* out);
  /// The coding used (never automatic).
  ME_SMS_ENCODE Coding() const { return enc_; }
  int Error() const { return error_; }

 private:
  struct Ie {
    int pos = 0;                 // text position (UTF-16 units of the full text)
    std::vector<uint8_t> bytes;  // the whole element; the position octet is set per segment
    bool format = false;
    int formatLen = 0;
  };
  struct Segment {
    size_t start = 0, end = 0;  // text units
    int textCost = 0;           // septets (GSM 7-bit) or UTF-16 units
    int ieOctets = 0;
    std::vector<Ie> ies;
  };

  void CollectIes(const CSmContent& content);
  bool Fits(const Segment& s, bool concat, int moreIe, int moreText) const;
  int UnitCost(size_t i, size_t* step) const;
  bool Layout(bool concat, std::vector<Segment>* segs);
  void Close(Segment* s, std::vector<Ie>* pending, size_t next) const;
  void Build(const Segment& s, bool concat, int ref, int total, int seq, unsigned char dcsClassBits,
             SM_UD_SEGMENT* out) const;

  ME_SMS_ENCODE enc_;
  int maxOctets_;
  std::u16string units_;
  std::vector<Ie> ies_;
  int error_ = 0;
};

}  // namespace sms
}  // namespace hs
