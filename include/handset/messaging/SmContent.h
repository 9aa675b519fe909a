#pragma once

#include "handset/messaging/SmAnimation.h"
#include "handset/messaging/SmAttach.h"
#include "handset/messaging/SmHtml.h"
#include "handset/messaging/SmMedia.h"
#include "handset/messaging/SmPicture.h"
#include "handset/messaging/SmSound.h"
#include "handset/messaging/SmSource.h"
#include "handset/messaging/SmText.h"
#include "handset/messaging/SmTextFormat.h"
#include "handset/platform/Strings.h"

/// The content of a message: an ordered list of items that the list owns.
class HANDSET_API CSmContent {
 public:
  CSmContent() = default;
  /// Deep copies (every item cloned).
  CSmContent(const CSmContent& other);
  CSmContent& operator=(const CSmContent& other);
  virtual ~CSmContent();

  /// ".ObjCount", then per item i the prefix + "[i]" with ".ClassID" and the item's own keys.
  /// Returns true.
  virtual bool PackData(const char* prefix, CPackageBlk& blk) const;
  /// Empties the list and rebuilds it; an index without a known class id is skipped. True.
  virtual bool UnpackData(const char* prefix, CUnpackageBlk& blk);
  /// Empties the list, then reads the count and each item (kind byte, record). False at an
  /// unknown kind or a record cut short; the items read so far stay.
  virtual bool Load(CArchive& ar);
  /// The count, then each item's record. False when the archive failed.
  virtual bool Save(CArchive& ar);
  /// Diagnostic hook; does nothing.
  virtual void Dump() const;

  /// Stores `m` (or, with `bClone`, a clone of it; the list owns what it stores). With `bSetPos`
  /// the position of `m` itself - not of the clone - becomes `GetLastInsPos()`. An empty text
  /// is not added. Returns the index of the last item (0 for an empty list).
  int AddItem(CSmMedia* m, bool bClone, bool bSetPos);
  /// Removes and destroys item `i`; false when out of range.
  bool DelItem(int i);
  CSmMedia* GetItem(int i) const;
  /// The `n`-th (from 0) item of kind `t`; null when there is none.
  CSmMedia* GetItem(ESmObjType t, int n) const;
  int GetItemCount() const { return m_listItems.GetCount(); }
  int GetItemCount(ESmObjType t) const;
  /// True when any item is not text.
  bool IsEnhancedContent() const;
  /// Removes `c` from every text item; returns how many bytes went.
  int RemoveChar(char c);
  /// Resets `out` and appends every text item in list order; true when there was one.
  bool GetFullText(CSmText* out) const;
  /// The sum of the used positions of all items: the next free position.
  int GetLastInsPos() const;
  /// The position in the text alone (UTF-16 units of the full text) of item position `pos`:
  /// `pos` less the positions that non-text items (pictures, sounds, animations) take before it.
  /// This is the position an EMS information element carries.
  int GetTextPosition(int pos) const;
  /// Destroys every item.
  void Reset();
  /// The items, in order (owned by the content).
  const CxTypedPtrList<CSmMedia*>& GetList() const { return m_listItems; }

  /// A new item of `type` as stored records build it; null for 6 and unknown kinds.
  static CSmMedia* CreateItem(ESmObjType type);

 private:
  CxTypedPtrList<CSmMedia*> m_listItems;
};

/// Appends every text item of `list` to `out` (reset first) and returns how many there were.
HANDSET_API int _GetSmGroupFullText(const CxTypedPtrList<CSmMedia*>& list, CSmText* out);
