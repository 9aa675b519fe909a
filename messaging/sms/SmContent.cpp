#include "handset/messaging/SmContent.h"

#include <new>
#include <string>

#include "messaging/sms/SmIo.h"

CSmContent::CSmContent(const CSmContent& other) {
  for (CSmMedia* m : other.m_listItems)
    if (CSmMedia* c = m->Clone()) m_listItems.AddTail(c);
}

CSmContent& CSmContent::operator=(const CSmContent& other) {
  if (this == &other) return *this;
  Reset();
  for (CSmMedia* m : other.m_listItems)
    if (CSmMedia* c = m->Clone()) m_listItems.AddTail(c);
  return *this;
}

CSmContent::~CSmContent() {
  Reset();
}

void CSmContent::Reset() {
  for (CSmMedia* m : m_listItems) delete m;
  m_listItems.RemoveAll();
}

CSmMedia* CSmContent::CreateItem(ESmObjType type) {
  switch (type) {
    case SMOBJ_TEXT:
      return new (std::nothrow) CSmText("");
    case SMOBJ_TEXTFORMAT:
      return new (std::nothrow) CSmTextFormat;
    case SMOBJ_PREDEF_SOUND:
    case SMOBJ_USER_MELODY:
      return new (std::nothrow) CSmSound(-1);
    case SMOBJ_PICTURE:
      return new (std::nothrow) CSmPicture;
    case SMOBJ_ANIMATION:
      return new (std::nothrow) CSmAnimation(-1);
    case SMOBJ_ATTACH:
      return new (std::nothrow) CSmAttach;
    case SMOBJ_HTML:
      return new (std::nothrow) CSmHtml;
    case SMOBJ_SOURCE:
      return new (std::nothrow) CSmSource;
  }
  return nullptr;  // 6 and anything unknown
}

int CSmContent::AddItem(CSmMedia* m, bool bClone, bool bSetPos) {
  if (m && (m->GetType() != SMOBJ_TEXT || m->GetLength() > 0)) {
    CSmMedia* stored = bClone ? m->Clone() : m;
    // The position goes to the object passed in, never to the clone: stored records rely on it.
    if (bSetPos) m->SetPosition(GetLastInsPos());
    if (stored) m_listItems.AddTail(stored);
  }
  int n = GetItemCount();
  return n > 0 ? n - 1 : 0;
}

bool CSmContent::DelItem(int i) {
  if (i < 0 || i >= GetItemCount()) return false;
  delete m_listItems.GetAt(i);
  m_listItems.RemoveAt(i);
  return true;
}

CSmMedia* CSmContent::GetItem(int i) const {
  return i >= 0 && i < GetItemCount() ? m_listItems.GetAt(i) : nullptr;
}

CSmMedia* CSmContent::GetItem(ESmObjType t, int n) const {
  for (CSmMedia* m : m_listItems)
    if (m->GetType() == t && n-- == 0) return m;
  return nullptr;
}

int CSmContent::GetItemCount(ESmObjType t) const {
  int n = 0;
  for (CSmMedia* m : m_listItems) n += m->GetType() == t;
  return n;
}

bool CSmContent::IsEnhancedContent() const {
  for (CSmMedia* m : m_listItems)
    if (m->GetType() != SMOBJ_TEXT) return true;
  return false;
}

int CSmContent::RemoveChar(char c) {
  int n = 0;
  for (CSmMedia* m : m_listItems)
    if (m->GetType() == SMOBJ_TEXT) n += static_cast<CSmText*>(m)->Remove(c);
  return n;
}

bool CSmContent::GetFullText(CSmText* out) const {
  return _GetSmGroupFullText(m_listItems, out) > 0;
}

int CSmContent::GetLastInsPos() const {
  int n = 0;
  for (CSmMedia* m : m_listItems) n += m->GetUsedPosition();
  return n;
}

int CSmContent::GetTextPosition(int pos) const {
  int t = pos;
  for (CSmMedia* m : m_listItems)
    if (m->GetType() != SMOBJ_TEXT && m->GetPosition() < pos) t -= m->GetUsedPosition();
  return t < 0 ? 0 : t;
}

bool CSmContent::PackData(const char* prefix, CPackageBlk& blk) const {
  hs::sms::PutInt(blk, prefix, ".ObjCount", GetItemCount());
  for (int i = 0; i < GetItemCount(); ++i) {
    std::string item = hs::sms::Key(prefix, "[") + std::to_string(i) + "]";
    CSmMedia* m = m_listItems.GetAt(i);
    hs::sms::PutInt(blk, item.c_str(), ".ClassID", m->GetType());
    m->PackData(item.c_str(), blk);
  }
  return true;
}

bool CSmContent::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  Reset();
  int32_t count = 0;
  hs::sms::GetInt(blk, prefix, ".ObjCount", &count);
  // Every item needs its own class id key, so a count larger than the block's keys ends early.
  if (count > blk.GetCount()) count = blk.GetCount();
  for (int i = 0; i < count; ++i) {
    std::string item = hs::sms::Key(prefix, "[") + std::to_string(i) + "]";
    int32_t kind = 0;
    if (!hs::sms::GetInt(blk, item.c_str(), ".ClassID", &kind)) continue;
    CSmMedia* m = CreateItem(static_cast<ESmObjType>(kind));
    if (!m) continue;
    m->UnpackData(item.c_str(), blk);
    m_listItems.AddTail(m);
  }
  return true;
}

bool CSmContent::Load(CArchive& ar) {
  Reset();
  int32_t count = 0;
  ar >> count;
  if (!ar.IsGood() || count < 0) return false;
  for (int32_t i = 0; i < count; ++i) {
    uint8_t kind = 0;
    ar >> kind;
    if (!ar.IsGood()) return false;
    CSmMedia* m = CreateItem(static_cast<ESmObjType>(kind));
    if (!m) return false;
    if (!m->Load(ar)) {
      delete m;
      return false;
    }
    int before = GetItemCount();
    AddItem(m, false, false);
    if (GetItemCount() == before) delete m;  // an empty text is not kept
  }
  return true;
}

bool CSmContent::Save(CArchive& ar) {
  ar << static_cast<int32_t>(GetItemCount());
  for (CSmMedia* m : m_listItems)
    if (!m->Save(ar)) return false;
  return ar.IsGood();
}

void CSmContent::Dump() const {}

int _GetSmGroupFullText(const CxTypedPtrList<CSmMedia*>& list, CSmText* out) {
  if (!out) return 0;
  std::string text;
  int n = 0;
  for (CSmMedia* m : list)
    if (m && m->GetType() == SMOBJ_TEXT) {
      text += static_cast<const char*>(static_cast<CSmText*>(m)->GetData());
      ++n;
    }
  out->Reset();
  out->SetData(text.c_str());
  return n;
}
