#pragma once

#include <cstdint>

#include "handset/export.h"

/// A small owned byte buffer: the storage of CAmr and CAac.
class HANDSET_API CByteBlock {
 public:
  /// Allocates `size` zeroed bytes (nothing for 0).
  explicit CByteBlock(uint32_t size = 0);
  virtual ~CByteBlock();
  CByteBlock(const CByteBlock&) = delete;
  CByteBlock& operator=(const CByteBlock&) = delete;

  /// Frees the old data and takes ownership of `data` (allocated with new[] of a byte type)
  /// without copying it.
  void Attach(void* data, uint32_t size);
  /// Copies up to `count` bytes of `source`, starting `offset` bytes into it, to the start of the
  /// block. The count is clipped to the block size; `*copied` (optional) receives the count
  /// copied. False when the block holds no data or `source` is null.
  bool CopyIn(const void* source, uint32_t offset, uint32_t count, uint32_t* copied = nullptr);
  /// Moves data and size into `target` (freeing what it held) and empties this block. Handing
  /// over to itself fails.
  bool HandOver(CByteBlock& target);
  /// Frees the data.
  void Free();

  unsigned char* GetData() const { return m_pData; }
  uint32_t GetSize() const { return m_nSize; }

 private:
  uint32_t m_nSize;
  unsigned char* m_pData;
};
