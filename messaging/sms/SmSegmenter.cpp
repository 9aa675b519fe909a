#include "messaging/sms/SmSegmenter.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "handset/platform/GsmCodec.h"
#include "handset/platform/Results.h"
#include "platform/Os.h"

namespace hs {
namespace sms {

namespace {

constexpr int kConcatOctets = 5;  // 00 03 ref total seq
constexpr int kMaxIe = 257;       // identifier, length and 255 octets
constexpr int kMaxSegments = 255;

bool IsPair(const std::u16string& u, size_t i) {
  return u[i] >= 0xD800 && u[i] <= 0xDBFF && i + 1 < u.size() && u[i + 1] >= 0xDC00 &&
         u[i + 1] <= 0xDFFF;
}

int HeaderSeptets(int udhOctets) {
  return (udhOctets * 8 + 6) / 7;
}

}  // namespace

Segmenter::Segmenter(const CSmContent& content, ME_SMS_ENCODE enc, int maxOctets)
    : enc_(enc), maxOctets_(maxOctets) {
  CSmText full("");
  content.GetFullText(&full);
  const char* text = static_cast<char*>(full);
  units_ = hs::os::AnsiToUtf16(text, std::strlen(text));
  if (enc_ == SMS_ENC_AUTO) enc_ = IsGsm7BitAlphabet(text) ? SMS_ENC_GSM7 : SMS_ENC_UCS2;
  if (enc_ != SMS_ENC_GSM7) enc_ = SMS_ENC_UCS2;
  CollectIes(content);
}

void Segmenter::CollectIes(const CSmContent& content) {
  int textSize = static_cast<int>(units_.size());
  for (CSmMedia* m : content.GetList()) {
    if (m->GetType() == SMOBJ_TEXT) continue;
    // The element is encoded from a clone at position 0; its position octet is set per segment.
    std::unique_ptr<CSmMedia> c(m->Clone());
    if (!c) continue;
    c->SetPosition(0);
    unsigned char buf[kMaxIe];
    unsigned char* p = buf;
    int room = kMaxIe;
    int n = c->Encoder(enc_, p, room);
    if (n <= 0) continue;  // nothing to send for this item
    Ie ie;
    ie.bytes.assign(buf, buf + n);
    ie.pos = std::min(content.GetTextPosition(m->GetPosition()), textSize);
    if (m->GetType() == SMOBJ_TEXTFORMAT) {
      ie.format = true;
      ie.formatLen =
          std::max(0, std::min(static_cast<CSmTextFormat*>(m)->m_nEffectLen, textSize - ie.pos));
    }
    ies_.push_back(ie);
  }
  std::stable_sort(ies_.begin(), ies_.end(),
                   [](const Ie& a, const Ie& b) { return a.pos < b.pos; });
}

int Segmenter::UnitCost(size_t i, size_t* step) const {
  bool pair = IsPair(units_, i);
  *step = pair ? 2 : 1;
  if (enc_ == SMS_ENC_UCS2) return pair ? 2 : 1;
  if (pair) return 1;  // sent as one '?'
  int s = Gsm7BitCharSeptets(units_[i]);
  return s == 0 ? 1 : s;
}

bool Segmenter::Fits(const Segment& s, bool concat, int moreIe, int moreText) const {
  int ie = s.ieOctets + moreIe + (concat ? kConcatOctets : 0);
  int udh = ie > 0 ? ie + 1 : 0;
  int text = s.textCost + moreText;
  if (enc_ == SMS_ENC_GSM7) return HeaderSeptets(udh) + text <= maxOctets_ * 8 / 7;
  return udh + 2 * text <= maxOctets_;
}

// Ends a segment: formatting ranges are cut at its end and go on in the next one.
void Segmenter::Close(Segment* s, std::vector<Ie>* pending, size_t next) const {
  std::vector<Ie> more;
  for (Ie& ie : s->ies) {
    if (!ie.format) continue;
    int end = ie.pos + ie.formatLen;
    if (end > static_cast<int>(s->end) && ie.pos < static_cast<int>(s->end)) {
      Ie rest = ie;
      rest.pos = static_cast<int>(s->end);
      rest.formatLen = end - rest.pos;
      ie.formatLen = rest.pos - ie.pos;
      more.push_back(rest);
    }
  }
  pending->insert(pending->begin() + static_cast<long>(next), more.begin(), more.end());
}

bool Segmenter::Layout(bool concat, std::vector<Segment>* segs) {
  segs->clear();
  std::vector<Ie> pending = ies_;
  Segment cur;
  size_t k = 0, i = 0;
  auto startNew = [&](size_t at) {
    Close(&cur, &pending, k);
    segs->push_back(cur);
    cur = Segment();
    cur.start = cur.end = at;
  };
  for (;;) {
    while (k < pending.size() && pending[k].pos <= static_cast<int>(i)) {
      int size = static_cast<int>(pending[k].bytes.size());
      if (!Fits(cur, concat, size, 0)) {
        if (cur.ies.empty() && cur.textCost == 0) return error_ = kErrItemTooLarge, false;
        startNew(i);
        continue;  // the pending list may have grown by a continued format
      }
      cur.ies.push_back(pending[k++]);
      cur.ieOctets += size;
    }
    if (i >= units_.size()) break;
    size_t step = 1;
    int cost = UnitCost(i, &step);
    if (!Fits(cur, concat, 0, cost)) {
      // A formatting range that would start at the very end of this segment belongs with its
      // text in the next one (unless this segment has no text at all, which would never end).
      while (cur.textCost > 0 && !cur.ies.empty() && cur.ies.back().format &&
             cur.ies.back().pos == static_cast<int>(i)) {
        cur.ieOctets -= static_cast<int>(cur.ies.back().bytes.size());
        pending.insert(pending.begin() + static_cast<long>(k), cur.ies.back());
        cur.ies.pop_back();
      }
      startNew(i);
      continue;
    }
    cur.textCost += cost;
    i += step;
    cur.end = i;
  }
  Close(&cur, &pending, k);
  segs->push_back(cur);
  return true;
}

void Segmenter::Build(const Segment& s, bool concat, int ref, int total, int seq,
                      unsigned char dcsClassBits, SM_UD_SEGMENT* out) const {
  *out = SM_UD_SEGMENT();
  std::vector<uint8_t> udh;
  if (concat) {
    const uint8_t c[] = {0x00, 0x03, static_cast<uint8_t>(ref), static_cast<uint8_t>(total),
                         static_cast<uint8_t>(seq)};
    udh.insert(udh.end(), c, c + sizeof c);
  }
  for (const Ie& ie : s.ies) {
    std::vector<uint8_t> b = ie.bytes;
    b[2] = static_cast<uint8_t>(ie.pos - static_cast<int>(s.start));
    if (ie.format) b[3] = static_cast<uint8_t>(ie.formatLen);
    udh.insert(udh.end(), b.begin(), b.end());
  }
  int udhOctets = 0;
  if (!udh.empty()) {
    out->bUdhi = true;
    out->abUd[0] = static_cast<unsigned char>(udh.size());
    std::memcpy(out->abUd + 1, udh.data(), udh.size());
    udhOctets = static_cast<int>(udh.size()) + 1;
  }
  const char16_t* text = units_.data() + s.start;
  int count = static_cast<int>(s.end - s.start);
  if (enc_ == SMS_ENC_GSM7) {
    unsigned char septets[160];
    int n = UCS2ToGsm7Bit(reinterpret_cast<const unsigned short*>(text), count, septets, 160);
    int headerSeptets = HeaderSeptets(udhOctets);
    int fill = headerSeptets * 7 - udhOctets * 8;
    int packed = PackGsm7Bit(septets, n, fill, out->abUd + udhOctets, maxOctets_ - udhOctets);
    out->nDcs = dcsClassBits;
    out->nUdl = headerSeptets + n;
    out->nLength = udhOctets + packed;
  } else {
    unsigned char* p = out->abUd + udhOctets;
    for (int j = 0; j < count; ++j) {
      *p++ = static_cast<unsigned char>(text[j] >> 8);
      *p++ = static_cast<unsigned char>(text[j]);
    }
    out->nDcs = static_cast<unsigned char>(0x08 | dcsClassBits);
    out->nUdl = out->nLength = udhOctets + 2 * count;
  }
}

int Segmenter::Run(int ref, unsigned char dcsClassBits, std::vector<SM_UD_SEGMENT>* out) {
  std::vector<Segment> segs;
  bool concat = false;
  if (!Layout(false, &segs) || segs.size() > 1) {
    error_ = 0;
    concat = true;
    if (!Layout(true, &segs)) return 0;
    if (segs.size() > kMaxSegments) return error_ = kErrTooManySegments, 0;
  }
  if (out) {
    out->assign(segs.size(), SM_UD_SEGMENT());
    int total = static_cast<int>(segs.size());
    for (int n = 0; n < total; ++n)
      Build(segs[n], concat, ref, total, n + 1, dcsClassBits, &(*out)[n]);
  }
  return static_cast<int>(segs.size());
}

}  // namespace sms
}  // namespace hs
