#pragma once

#include "handset/export.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/Strings.h"

/// A node of the media-directory tree: a name, a parent and owned children in order.
///
/// Package keys (caller's prefix + name): "MediaDirClassID" ("CMediaDir"), "m_strDirName"
/// (text), and, when children are packed, "m_nDirChildCount" (4 bytes) with each child under
/// prefix + "[%d]".
class HANDSET_API CMediaDir {
 public:
  CMediaDir() = default;
  explicit CMediaDir(const char* name) : m_strDirName(name) {}
  /// Deletes the children.
  virtual ~CMediaDir();
  /// Copies the name only; the copy has no parent and no children.
  CMediaDir(const CMediaDir& other) : m_strDirName(other.m_strDirName) {}
  CMediaDir& operator=(const CMediaDir& other);

  const CString& GetDirName() const { return m_strDirName; }
  void SetDirName(const char* name) { m_strDirName = name; }
  CMediaDir* GetParentDir() const { return m_pParentDir; }
  int GetChildCount() const { return m_children.GetCount(); }
  /// The child at `index`, or null when out of range.
  CMediaDir* GetChildAt(int index) const;
  /// Appends `child` and takes ownership; a child of another node is detached from it first.
  void AddChild(CMediaDir* child);
  /// Takes `child` out of the list without deleting it; false when it is not a child.
  bool DetachChild(CMediaDir* child);
  void RemoveAllChildren();
  /// Appends all children, in order, to `to` (which takes ownership) and leaves this node
  /// without children; linear in their number. Nothing moves when `to` is this node or below it.
  void MoveChildrenTo(CMediaDir* to);

  /// Packs the node (and its subtree when `withChildren`). Returns 1.
  virtual int PackData(const char* prefix, CPackageBlk& blk, int withChildren) const;
  /// Reads the node from keys under `prefix`; with `withChildren` the children are rebuilt. Texts
  /// longer than their field are cut. Returns 0 (and keeps what was read) when the class id is
  /// missing or wrong, or the tree is deeper than 64 levels.
  virtual int UnpackData(const char* prefix, const CUnpackageBlk& blk, int withChildren);

  static const size_t kMaxDirName = 260;

 protected:
  /// A new, empty child of this node's class for unpacking.
  virtual CMediaDir* _CreateChild() const { return new CMediaDir; }
  int _UnpackTree(const char* prefix, const CUnpackageBlk& blk, int withChildren, int depth);
  /// Reads this node's own keys (not the children).
  virtual int _UnpackSelf(const char* prefix, const CUnpackageBlk& blk);

  CString m_strDirName;
  CMediaDir* m_pParentDir = nullptr;
  CxTypedPtrList<CMediaDir*> m_children;  ///< owned
};
