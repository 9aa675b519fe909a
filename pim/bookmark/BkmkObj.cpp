#include "handset/pim/BkmkObj.h"

namespace {

CString Key(const char* prefix, const char* name) {
  return CString(prefix ? prefix : "") + name;
}

// Reads a text key into `out` cut to `capacity - 1` bytes; absent keys leave `out` alone.
template <size_t N>
void CopyText(const CUnpackageBlk& blk, const CString& key, CString* out) {
  char buf[N];
  if (blk.CopyString(key.c_str(), buf, sizeof(buf))) *out = buf;
}

}  // namespace

CBkmkObj::CBkmkObj(const char* handle) : m_strHandle(handle) {}

CBkmkObj::CBkmkObj(const char* handle, const char* title, OBJECT_TYPE type)
    : m_strHandle(handle), m_enBkmkType(type) {
  SetTitle(title);
}

CBkmkObj::~CBkmkObj() {
  delete m_pGenCap;
}

CBkmkObj::CBkmkObj(const CBkmkObj& other) : CMediaDir(other) {
  _CopyFields(other);
}

CBkmkObj& CBkmkObj::operator=(const CBkmkObj& other) {
  if (this != &other) {
    CMediaDir::operator=(other);
    _CopyFields(other);
  }
  return *this;
}

void CBkmkObj::_CopyFields(const CBkmkObj& other) {
  m_strHandle = other.m_strHandle;
  m_strTitle = other.m_strTitle;
  m_strURL = other.m_strURL;
  m_enBkmkType = other.m_enBkmkType;
  SetGenCap(other.m_pGenCap);
  m_nCustImgNormal = other.m_nCustImgNormal;
  m_nCustImgDown = other.m_nCustImgDown;
  m_nMaxSubFolder = other.m_nMaxSubFolder;
  m_nMaxChildFile = other.m_nMaxChildFile;
}

bool CBkmkObj::operator==(const CBkmkObj& o) const {
  bool capsEqual =
      (!m_pGenCap && !o.m_pGenCap) || (m_pGenCap && o.m_pGenCap && *m_pGenCap == *o.m_pGenCap);
  return m_strDirName == o.m_strDirName && m_strHandle == o.m_strHandle &&
         m_strTitle == o.m_strTitle && m_strURL == o.m_strURL && m_enBkmkType == o.m_enBkmkType &&
         capsEqual && m_nCustImgNormal == o.m_nCustImgNormal &&
         m_nCustImgDown == o.m_nCustImgDown && m_nMaxSubFolder == o.m_nMaxSubFolder &&
         m_nMaxChildFile == o.m_nMaxChildFile;
}

bool CBkmkObj::IsFileEqual(const CBkmkObj& o) const {
  return m_enBkmkType == o.m_enBkmkType && m_strTitle == o.m_strTitle && m_strURL == o.m_strURL;
}

CBkmkObj* CBkmkObj::Clone() const {
  return new CBkmkObj(*this);
}

CBkmkObj* CBkmkObj::DuplicateBkmkObj() const {
  CBkmkObj* copy = Clone();
  for (int i = 0; i < GetChildCount(); ++i)
    if (CBkmkObj* c = GetChildBkmk(i)) copy->AddChild(c->DuplicateBkmkObj());
  return copy;
}

void CBkmkObj::SetTitle(const char* title) {
  m_strTitle = title;
  m_strDirName = m_strTitle;
}

void CBkmkObj::SetGenCap(const CBkmkGenCap* cap) {
  if (cap == m_pGenCap) return;
  delete m_pGenCap;
  m_pGenCap = cap ? new CBkmkGenCap(*cap) : nullptr;
}

CBkmkObj* CBkmkObj::GetChildBkmk(int index) const {
  return dynamic_cast<CBkmkObj*>(GetChildAt(index));
}

int CBkmkObj::RemoveChildBkmk(CBkmkObj* child) {
  if (!DetachChild(child)) return 0;
  delete child;
  return 1;
}

int CBkmkObj::GetFileCount(int recursive) const {
  int n = 0;
  for (int i = 0; i < GetChildCount(); ++i) {
    const CBkmkObj* c = GetChildBkmk(i);
    if (!c) continue;
    if (c->m_enBkmkType == OBJECT_TYPE_FILE) ++n;
    if (recursive) n += c->GetFileCount(1);
  }
  return n;
}

int CBkmkObj::GetFolderCount(int recursive) const {
  int n = 0;
  for (int i = 0; i < GetChildCount(); ++i) {
    const CBkmkObj* c = GetChildBkmk(i);
    if (!c) continue;
    if (c->m_enBkmkType == OBJECT_TYPE_FOLDER) ++n;
    if (recursive) n += c->GetFolderCount(1);
  }
  return n;
}

int CBkmkObj::CreateVBKM(CVbkm*& vbkm) const {
  if (m_enBkmkType == OBJECT_TYPE_FOLDER) return 0;
  bool created = !vbkm;
  if (created) vbkm = new CVbkm;
  if (!vbkm->CreateEmptyProperties()) {
    if (created) {
      delete vbkm;
      vbkm = nullptr;
    }
    return 0;
  }
  vbkm->SetTitleAndUrl(m_strTitle.c_str(), m_strURL.c_str());
  // Nodes carry no browser type; the dialect that has one keeps its "FULL".
  return 1;
}

int CBkmkObj::FromVBKM(CVbkm* vbkm) {
  if (!vbkm) return 0;
  // The tree holds plain text: values read quoted-printable are decoded (and kept as they stand
  // when they do not decode).
  auto plain = [vbkm](const char* name, CString* out) {
    const char* held = vbkm->GetPropTableValue(name);
    if (!held) return false;
    if (!vbkm->GetPropDecodedValue(name, out)) *out = held;
    return true;
  };
  CString title, url;
  if (!plain("TITLE", &title)) return 0;
  if (!plain("URL", &url) || url.empty()) plain("X-IRMC-URL", &url);
  SetTitle(title.c_str());
  m_strURL = url;
  m_enBkmkType = OBJECT_TYPE_FILE;
  return 1;
}

int CBkmkObj::PackData(const char* prefix, CPackageBlk& blk, int withChildren) const {
  CMediaDir::PackData(prefix, blk, withChildren);
  blk.AddString(Key(prefix, "ClassID").c_str(), "CBkmkObject");
  blk.AddString(Key(prefix, "m_strHandle").c_str(), m_strHandle.c_str());
  blk.AddString(Key(prefix, "m_strTitle").c_str(), m_strTitle.c_str());
  blk.AddString(Key(prefix, "m_strURL").c_str(), m_strURL.c_str());
  blk.AddInt(Key(prefix, "m_enBkmkType").c_str(), m_enBkmkType);
  blk.AddInt(Key(prefix, "m_pGenCap").c_str(), m_pGenCap ? 1 : 0);
  if (m_pGenCap) m_pGenCap->PackData(prefix, blk);
  blk.AddInt(Key(prefix, "m_nCustImgNormal").c_str(), m_nCustImgNormal);
  blk.AddInt(Key(prefix, "m_nCustImgDown").c_str(), m_nCustImgDown);
  blk.AddInt(Key(prefix, "m_nMaxSubFolder").c_str(), m_nMaxSubFolder);
  blk.AddInt(Key(prefix, "m_nMaxChildFile").c_str(), m_nMaxChildFile);
  return 1;
}

int CBkmkObj::_UnpackSelf(const char* prefix, const CUnpackageBlk& blk) {
  // The node starts from its reset state, so keys that are absent read as defaults.
  *this = CBkmkObj();
  if (!CMediaDir::_UnpackSelf(prefix, blk)) return 0;
  CString id;
  if (!blk.GetString(Key(prefix, "ClassID").c_str(), &id) || id != "CBkmkObject") return 0;
  CopyText<kMaxHandle>(blk, Key(prefix, "m_strHandle"), &m_strHandle);
  CopyText<kMaxTitle>(blk, Key(prefix, "m_strTitle"), &m_strTitle);
  CopyText<kMaxURL>(blk, Key(prefix, "m_strURL"), &m_strURL);
  int32_t v = 0;
  if (blk.GetInt(Key(prefix, "m_enBkmkType").c_str(), &v))
    m_enBkmkType = static_cast<OBJECT_TYPE>(v);
  int32_t hasCap = 0;
  if (blk.GetInt(Key(prefix, "m_pGenCap").c_str(), &hasCap) && hasCap) {
    CBkmkGenCap cap;
    cap.UnpackData(prefix, blk);
    SetGenCap(&cap);
  }
  blk.GetInt(Key(prefix, "m_nCustImgNormal").c_str(), &m_nCustImgNormal);
  blk.GetInt(Key(prefix, "m_nCustImgDown").c_str(), &m_nCustImgDown);
  blk.GetInt(Key(prefix, "m_nMaxSubFolder").c_str(), &m_nMaxSubFolder);
  blk.GetInt(Key(prefix, "m_nMaxChildFile").c_str(), &m_nMaxChildFile);
  return 1;
}

CString CBkmkObj::_DUMP_DBG_INFO(int indent) const {
  CString s(static_cast<size_t>(indent < 0 ? 0 : indent) * 2, ' ');
  CString line;
  line.Format("%s \"%s\" handle=\"%s\" url=\"%s\"\n",
              m_enBkmkType == OBJECT_TYPE_FOLDER ? "folder" : "bookmark", m_strTitle.c_str(),
              m_strHandle.c_str(), m_strURL.c_str());
  s += line;
  for (int i = 0; i < GetChildCount(); ++i)
    if (const CBkmkObj* c = GetChildBkmk(i)) s += c->_DUMP_DBG_INFO(indent + 1);
  return s;
}
