#include "handset/messaging/MmsMediaObj.h"

#include <cstring>

CMmsMediaObj::~CMmsMediaObj() {
  FreeData();
}

CMmsMediaObj::CMmsMediaObj(const CMmsMediaObj& other) {
  *this = other;
}

CMmsMediaObj& CMmsMediaObj::operator=(const CMmsMediaObj& other) {
  if (this == &other) return *this;
  m_headers = other.m_headers;
  m_sFileName = other.m_sFileName;
  m_sContentID = other.m_sContentID;
  m_sContentType = other.m_sContentType;
  m_sContentLocation = other.m_sContentLocation;
  m_eMimeType = other.m_eMimeType;
  m_nCharset = other.m_nCharset;
  SetData(other.m_pData, other.m_nSize);
  return *this;
}

void CMmsMediaObj::FreeData() {
  delete[] m_pAdopted;
  m_pAdopted = nullptr;
  m_owned.clear();
  m_owned.shrink_to_fit();
  m_pData = nullptr;
  m_nSize = 0;
}

void CMmsMediaObj::SetMimeType(EMimeCntType type) {
  m_eMimeType = type;
  m_sContentType.Empty();
}

void CMmsMediaObj::SetData(const void* data, uint32_t size) {
  if (!data) size = 0;
  // Copy first: `data` may point into the buffer being replaced.
  std::vector<uint8_t> copy(static_cast<const uint8_t*>(data),
                            static_cast<const uint8_t*>(data) + size);
  FreeData();
  m_owned.swap(copy);
  m_pData = m_owned.empty() ? nullptr : m_owned.data();
  m_nSize = size;
}

void CMmsMediaObj::AttachData(uint8_t* data, uint32_t size, bool autoDelete) {
  if (data == m_pAdopted && data) {
    m_nSize = size;  // the same buffer again: keep ownership, only the size changes
    m_pData = data;
    return;
  }
  FreeData();
  m_pData = data;
  m_nSize = data ? size : 0;
  if (autoDelete) m_pAdopted = data;
}

void CMmsMediaObj::SetContentType(const char* mime) {
  m_sContentType = mime;
  EMimeCntType known = MmsMimeTypeFromName(mime);
  m_eMimeType = known;
}

CString CMmsMediaObj::GetContentType() const {
  if (!m_sContentType.IsEmpty()) return m_sContentType;
  EMimeCntType type = m_eMimeType;
  if (type == MIME_CNT_UNKNOWN) type = MmsMimeTypeFromFileName(m_sFileName.c_str());
  if (type == MIME_CNT_UNKNOWN) type = MmsMimeTypeFromData(m_pData, m_nSize);
  const char* name = MmsMimeTypeName(type);
  return name ? name : "application/octet-stream";
}

CString CMmsMediaObj::GetContentLocation() const {
  if (!m_sContentLocation.IsEmpty()) return m_sContentLocation;
  size_t slash = m_sFileName.find_last_of("/\\");
  return slash == std::string::npos ? m_sFileName : CString(m_sFileName.substr(slash + 1));
}
