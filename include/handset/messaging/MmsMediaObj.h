#pragma once

#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/messaging/MmsHeaderField.h"
#include "handset/messaging/MmsMimeType.h"
#include "handset/platform/Strings.h"

/// One media object (one part) of an MMS message: a file name, a content id, a MIME type and the
/// data bytes. The object owns a copy of its data, or refers to a caller's buffer when attached
/// with `AttachData` (see there).
class HANDSET_API CMmsMediaObj {
 public:
  CMmsMediaObj() = default;
  ~CMmsMediaObj();
  /// Copies every field; the copy always owns its data.
  CMmsMediaObj(const CMmsMediaObj& other);
  CMmsMediaObj& operator=(const CMmsMediaObj& other);

  /// The part's Content-ID ("<image1>"; angle brackets are added when sending if missing).
  void SetContentID(const char* contentId) { m_sContentID = contentId; }
  /// The part's MIME type. A type set as text with `SetContentType` is dropped.
  void SetMimeType(EMimeCntType type);
  void SetFileName(const char* fileName) { m_sFileName = fileName; }
  /// Copies `size` bytes (`data` may be null only when `size` is 0).
  void SetData(const void* data, uint32_t size);
  /// Uses `data` in place instead of a copy. With `autoDelete` the object takes ownership and
  /// frees it with delete[] (it must come from new uint8_t[]); otherwise the caller keeps it
  /// alive and unchanged for as long as this object uses it.
  void AttachData(uint8_t* data, uint32_t size, bool autoDelete);
  /// The MIME type as text, for types outside EMimeCntType ("text/x-vnote"); also sets the
  /// EMimeCntType when the text is one of them.
  void SetContentType(const char* mime);
  /// The name the part is sent under (Content-Location); by default the file name's last part.
  void SetContentLocation(const char* location) { m_sContentLocation = location; }
  /// The charset of a text part (IANA MIBenum); 0 lets the encoder choose from the data.
  void SetCharset(int mib) { m_nCharset = mib; }

  const CString& GetFileName() const { return m_sFileName; }
  const CString& GetContentID() const { return m_sContentID; }
  EMimeCntType GetMimeType() const { return m_eMimeType; }
  const uint8_t* GetData() const { return m_pData; }
  uint32_t GetSize() const { return m_nSize; }
  int GetCharset() const { return m_nCharset; }
  /// The MIME text to send: the text set, else that of the MIME type, else the type the file
  /// name's extension or the data stand for, else "application/octet-stream".
  CString GetContentType() const;
  /// The Content-Location to send: the one set, else the last part of the file name.
  CString GetContentLocation() const;
  /// The Content-Location set explicitly (empty when none).
  const CString& GetExplicitContentLocation() const { return m_sContentLocation; }

  /// The part headers as they were read from a PDU (empty for objects built otherwise).
  std::vector<CMmsHeaderField> m_headers;

 private:
  void FreeData();

  CString m_sFileName;
  CString m_sContentID;
  CString m_sContentType;
  CString m_sContentLocation;
  EMimeCntType m_eMimeType = MIME_CNT_UNKNOWN;
  int m_nCharset = 0;
  std::vector<uint8_t> m_owned;
  const uint8_t* m_pData = nullptr;
  uint32_t m_nSize = 0;
  uint8_t* m_pAdopted = nullptr;  ///< freed with delete[]
};
