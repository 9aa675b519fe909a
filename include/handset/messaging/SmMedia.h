#pragma once

#include "handset/export.h"
#include "handset/platform/Archive.h"
#include "handset/platform/PackageBlk.h"

/// Kind of a message content item. The value is also the item's stored class id.
enum ESmObjType : int {
  SMOBJ_TEXT = 0,
  SMOBJ_TEXTFORMAT = 1,
  SMOBJ_PREDEF_SOUND = 2,
  SMOBJ_USER_MELODY = 3,
  SMOBJ_PICTURE = 4,
  SMOBJ_ANIMATION = 5,
  // 6 has no class: stored records carrying it are skipped (package blocks) or refused (archives).
  SMOBJ_ATTACH = 7,
  SMOBJ_HTML = 8,
  SMOBJ_SOURCE = 9,
};

/// Data coding of short-message user data.
enum ME_SMS_ENCODE : int {
  SMS_ENC_AUTO = -1,  ///< GSM 7-bit when every character allows it, else UCS-2
  SMS_ENC_GSM7 = 0,   ///< GSM 7-bit default alphabet
  SMS_ENC_UCS2 = 2,   ///< UCS-2 (UTF-16 big-endian)
};

/// One item of a message's content: text, a text-formatting range, a sound, a picture, an
/// animation, an attachment, an HTML body or a raw source. Items are anchored at a character
/// position of the message (`m_nBeginPos`) and occupy `m_nUsePos` positions: a text its
/// characters, a sound, picture or animation one, the others none.
///
/// Fields are public so that hosts reading stored records can reach them; use the methods to
/// change data blocks, which the item owns (allocated with malloc, freed with free).
class HANDSET_API CSmMedia {
 public:
  virtual ~CSmMedia();
  /// Frees the data block and sets the position, block and size to 0. The kind, the used
  /// positions and the anchor are kept.
  virtual void Reset();
  virtual void* GetData();
  virtual int GetLength() const;
  virtual int GetPosition() const;
  virtual void SetPosition(int pos);
  /// Replaces the data block by `n` bytes from `p` (the block grows; a failed growth keeps the
  /// old block). True when a block is held. `n` below 0 is taken as 0.
  virtual bool SetData(const void* p, int n);
  /// A new item of the same class with a deep copy of the data. The caller owns it.
  virtual CSmMedia* Clone() const = 0;
  /// Encoded size: octets when `bOctets`, else bits. See each class.
  virtual int EstimateEncodeSize(bool bOctets, ME_SMS_ENCODE enc) const = 0;
  /// Writes the item's EMS information element at `out` when it fits in `room`: advances `out`,
  /// lowers `room` and returns the bytes written; 0 (nothing written) when it does not fit or
  /// the item has nothing to send.
  virtual int Encoder(ME_SMS_ENCODE enc, unsigned char*& out, int& room) = 0;
  /// Writes the item under `prefix` (null is ""): ".m_eType", ".m_nBeginPos", ".m_nUsePos",
  /// ".m_pvRawData", ".m_nUserAnchor". Returns true.
  virtual bool PackData(const char* prefix, CPackageBlk& blk) const;
  /// Resets the item, then takes every key that is present. Returns true.
  virtual bool UnpackData(const char* prefix, CUnpackageBlk& blk);
  /// Reads the record that follows the kind byte. False when it is cut short or invalid.
  virtual bool Load(CArchive& ar) = 0;
  /// Writes the kind byte and the record. False when the archive failed.
  virtual bool Save(CArchive& ar) = 0;
  /// Diagnostic hook; does nothing.
  virtual void Dump() const;

  ESmObjType GetType() const { return m_eType; }
  int GetUsedPosition() const { return m_nUsePos; }
  int GetAnchor() const { return m_nUserAnchor; }
  void SetAnchor(int anchor) { m_nUserAnchor = anchor; }
  /// Copies every field and the data block.
  CSmMedia& operator=(const CSmMedia& other);

  ESmObjType m_eType;
  int m_nBeginPos = 0;
  int m_nUsePos = 0;
  void* m_pvRawData = nullptr;
  int m_nRawSize = 0;
  int m_nUserAnchor = 0;

 protected:
  explicit CSmMedia(ESmObjType type) : m_eType(type) {}
  CSmMedia(const CSmMedia& other);
  /// Frees the data block (nothing else).
  void FreeData();
  /// The data block as bytes (null when there is none).
  const unsigned char* Bytes() const { return static_cast<const unsigned char*>(m_pvRawData); }
};
