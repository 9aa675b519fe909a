#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/pim/MediaDir.h"
#include "handset/pim/Vbkm.h"

/// Kind of a bookmark-tree node.
enum OBJECT_TYPE : int32_t {
  OBJECT_TYPE_UNKNOWN = 0,
  OBJECT_TYPE_FOLDER = 1,
  OBJECT_TYPE_FILE = 2,  ///< a bookmark
};

/// Bookmark capabilities a phone reports: limits in single-byte (C) and wide (W) characters.
class HANDSET_API CBkmkGenCap {
 public:
  bool operator==(const CBkmkGenCap& o) const;
  bool operator!=(const CBkmkGenCap& o) const { return !(*this == o); }
  /// Keys "nFolderNameCLen", "nFolerNameWLen" (spelled so), "nFileNameCLen", "nFileNameWLen",
  /// "strVBKMversion", "nTitleCLen", "nTitleWLen", "enTitleEncode", "enTitleCharset",
  /// "nUrlCLen", "nUrlWLen" after `prefix`. Returns 1.
  int PackData(const char* prefix, CPackageBlk& blk) const;
  /// Reads the keys that are present; the others keep their value. "strVBKMversion" is cut to
  /// 15 bytes (kMaxVersion with the NUL): a block may claim any length. Returns 1.
  int UnpackData(const char* prefix, const CUnpackageBlk& blk);

  static const size_t kMaxVersion = 16;

  int32_t nFolderNameCLen = 0;
  int32_t nFolerNameWLen = 0;
  int32_t nFileNameCLen = 0;
  int32_t nFileNameWLen = 0;
  CString strVBKMversion;
  int32_t nTitleCLen = 0;
  int32_t nTitleWLen = 0;
  int32_t enTitleEncode = VOBJ_ENC_NONE;
  int32_t enTitleCharset = VOBJ_CHARSET_NONE;
  int32_t nUrlCLen = 0;
  int32_t nUrlWLen = 0;
};

/// A node of the phone's bookmark tree: a folder or a bookmark. The node's directory name follows
/// its title.
class HANDSET_API CBkmkObj : public CMediaDir {
 public:
  CBkmkObj() = default;
  explicit CBkmkObj(const char* handle);
  CBkmkObj(const char* handle, const char* title, OBJECT_TYPE type);
  ~CBkmkObj() override;
  /// Copies the node's own fields (not its children or parent).
  CBkmkObj(const CBkmkObj& other);
  CBkmkObj& operator=(const CBkmkObj& other);
  /// Equal own fields, capabilities included; children are not compared.
  bool operator==(const CBkmkObj& other) const;
  bool operator!=(const CBkmkObj& other) const { return !(*this == other); }
  /// Same kind, title and URL: what an exported file keeps.
  bool IsFileEqual(const CBkmkObj& other) const;

  /// A new node with this node's own fields (no children); the caller owns it.
  CBkmkObj* Clone() const;
  /// A deep copy of the subtree; the caller owns it.
  CBkmkObj* DuplicateBkmkObj() const;
  void SetFileType(OBJECT_TYPE type) { m_enBkmkType = type; }
  void SetTitle(const char* title);
  /// Attaches a copy of `cap` (null removes it).
  void SetGenCap(const CBkmkGenCap* cap);
  CBkmkObj* GetChildBkmk(int index) const;
  /// Deletes `child` from the children; 0 when it is not a child.
  int RemoveChildBkmk(CBkmkObj* child);
  /// Bookmarks (files) or folders among the children, through all levels when `recursive`.
  int GetFileCount(int recursive) const;
  int GetFolderCount(int recursive) const;

  /// Builds a vBookmark from a bookmark node. A null `vbkm` gets a new `CVbkm` (caller owns it);
  /// a given one (of any dialect) is refilled. 0 for a folder.
  int CreateVBKM(CVbkm*& vbkm) const;
  /// Takes title and URL from `vbkm`, decoded from the encoding their lines carry, and becomes a
  /// bookmark; 0 when it has no TITLE.
  int FromVBKM(CVbkm* vbkm);

  /// Packs the base keys, then "ClassID" ("CBkmkObject"), the fields and the capabilities; with
  /// `withChildren` the subtree. Returns 1.
  int PackData(const char* prefix, CPackageBlk& blk, int withChildren) const override;
  /// A multi-line description of the subtree for diagnostics.
  CString _DUMP_DBG_INFO(int indent = 0) const;

  /// Field sizes with the NUL. Unpacking cuts a longer stored text to its field (handle 63 bytes,
  /// title 255, URL 2047): a block may claim any length, and the phone's fields hold no more.
  static const size_t kMaxHandle = 64;
  static const size_t kMaxTitle = 256;
  static const size_t kMaxURL = 2048;

  CString m_strHandle;
  CString m_strTitle;
  CString m_strURL;
  OBJECT_TYPE m_enBkmkType = OBJECT_TYPE_UNKNOWN;
  CBkmkGenCap* m_pGenCap = nullptr;  ///< owned
  int32_t m_nCustImgNormal = 0;
  int32_t m_nCustImgDown = 0;
  int32_t m_nMaxSubFolder = 0;
  int32_t m_nMaxChildFile = 0;

 protected:
  CMediaDir* _CreateChild() const override { return new CBkmkObj; }
  /// Reads the node's own keys; texts are cut to kMaxHandle, kMaxTitle and kMaxURL less the NUL.
  int _UnpackSelf(const char* prefix, const CUnpackageBlk& blk) override;
  void _CopyFields(const CBkmkObj& other);
};
