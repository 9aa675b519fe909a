#pragma once

#include "handset/export.h"

class CSmContext;

/// Most parts of one concatenated message that the buffer takes.
constexpr int SM_MAX_PARTS = 30;

/// Reassembly buffer for one concatenated message: the parts arrive in any order under one
/// reference number and are turned into one context in sequence order.
class HANDSET_API CSmAssemble {
 public:
  /// Bytes of segment text a part keeps: a whole segment in UTF-8 (160 characters of up to three
  /// bytes each) and its terminator.
  static constexpr int kPartTextBytes = 481;
  /// Octets of user data a part keeps.
  static constexpr int kPartUdBytes = 140;

  CSmAssemble() { Reset(); }

  /// Forgets every part, the counts, the reference and the target.
  void Reset();
  /// Starts a message of `total` parts (1..30) under `ref` (not negative) for `target` (not
  /// owned; may be null). False, and nothing changed, otherwise.
  bool SetTarget(int ref, int total, CSmContext* target);
  /// True when `ref` and `total` are this message's and part `seq` (1..total) is still missing.
  bool CanAddPart(int ref, int seq, int total) const;
  /// Stores part `seq` (1..total) unless it is already there: its text (up to its terminator,
  /// at most kPartTextBytes - 1 bytes; null is "") and, when `ud140` is given, 140 octets of its
  /// user data, beginning with the header length octet. With `bCount` and a target, the target's
  /// reference count is raised by one - for a duplicate part too, as the stored callers expect.
  /// False when `seq` is out of range.
  bool AddPart(int seq, const char* text160, const unsigned char* ud140, bool bCount);
  /// True when every part is there.
  bool CanAssemble() const;
  /// Builds the content part by part into the target (`ctx` becomes the target when none is
  /// held): each received part through `ConstructContent`, each missing one as the text "{...}".
  /// When `ctx` is not the target it is then assigned from the target. False only when there is
  /// neither a target nor `ctx`.
  bool DoAssemble(CSmContext* ctx);
  CSmContext* GetTarget() const { return m_pTarget; }
  int GetTotal() const { return m_nTotal; }
  int GetReceived() const { return m_nReceived; }
  int GetReference() const { return m_nRef; }

 private:
  struct Part {
    unsigned char bReceived;
    char szText[kPartTextBytes];
    unsigned char abUd[kPartUdBytes];
  };
  Part m_parts[SM_MAX_PARTS];
  int m_nTotal = 0;
  int m_nReceived = 0;
  int m_nRef = -1;
  CSmContext* m_pTarget = nullptr;
};
