#include "handset/pim/MediaDir.h"

#include <cstdio>
#include <vector>

namespace {

CString Key(const char* prefix, const char* name) {
  return CString(prefix ? prefix : "") + name;
}

CString ChildPrefix(const char* prefix, int index) {
  CString s;
  s.Format("%s[%d]", prefix ? prefix : "", index);
  return s;
}

}  // namespace

CMediaDir::~CMediaDir() {
  RemoveAllChildren();
}

CMediaDir& CMediaDir::operator=(const CMediaDir& other) {
  m_strDirName = other.m_strDirName;
  return *this;
}

CMediaDir* CMediaDir::GetChildAt(int index) const {
  return index >= 0 && index < m_children.GetCount() ? m_children.GetAt(index) : nullptr;
}

void CMediaDir::AddChild(CMediaDir* child) {
  if (!child || child == this) return;
  if (child->m_pParentDir) child->m_pParentDir->DetachChild(child);
  child->m_pParentDir = this;
  m_children.AddTail(child);
}

bool CMediaDir::DetachChild(CMediaDir* child) {
  int i = m_children.Find(child);
  if (i < 0) return false;
  m_children.RemoveAt(i);
  child->m_pParentDir = nullptr;
  return true;
}

void CMediaDir::MoveChildrenTo(CMediaDir* to) {
  if (!to || to == this) return;
  // A node below this one cannot take this node's children: they would hold themselves.
  for (CMediaDir* p = to; p; p = p->m_pParentDir)
    if (p == this) return;
  to->m_children.reserve(to->m_children.size() + m_children.size());
  for (CMediaDir* c : m_children) {
    c->m_pParentDir = to;
    to->m_children.AddTail(c);
  }
  m_children.RemoveAll();
}

void CMediaDir::RemoveAllChildren() {
  for (CMediaDir* c : m_children) delete c;
  m_children.RemoveAll();
}

int CMediaDir::PackData(const char* prefix, CPackageBlk& blk, int withChildren) const {
  blk.AddString(Key(prefix, "MediaDirClassID").c_str(), "CMediaDir");
  blk.AddString(Key(prefix, "m_strDirName").c_str(), m_strDirName.c_str());
  if (withChildren) {
    blk.AddInt(Key(prefix, "m_nDirChildCount").c_str(), m_children.GetCount());
    for (int i = 0; i < m_children.GetCount(); ++i)
      m_children.GetAt(i)->PackData(ChildPrefix(prefix, i).c_str(), blk, 1);
  }
  return 1;
}

int CMediaDir::UnpackData(const char* prefix, const CUnpackageBlk& blk, int withChildren) {
  return _UnpackTree(prefix, blk, withChildren, 0);
}

int CMediaDir::_UnpackSelf(const char* prefix, const CUnpackageBlk& blk) {
  CString id;
  if (!blk.GetString(Key(prefix, "MediaDirClassID").c_str(), &id) || id != "CMediaDir") return 0;
  char name[kMaxDirName];
  name[0] = '\0';
  blk.CopyString(Key(prefix, "m_strDirName").c_str(), name, sizeof(name));
  m_strDirName = name;
  return 1;
}

int CMediaDir::_UnpackTree(const char* prefix, const CUnpackageBlk& blk, int withChildren,
                           int depth) {
  if (depth > 64 || !_UnpackSelf(prefix, blk)) return 0;
  if (!withChildren) return 1;
  RemoveAllChildren();
  int32_t count = 0;
  blk.GetInt(Key(prefix, "m_nDirChildCount").c_str(), &count);
  // Every child holds keys of its own, so a count beyond the block's size is a lie.
  if (count < 0 || count > blk.GetCount()) return 0;
  for (int i = 0; i < count; ++i) {
    CMediaDir* child = _CreateChild();
    int ok = child->_UnpackTree(ChildPrefix(prefix, i).c_str(), blk, 1, depth + 1);
    AddChild(child);
    if (!ok) return 0;
  }
  return 1;
}
