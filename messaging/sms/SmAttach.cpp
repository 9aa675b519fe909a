#include "handset/messaging/SmAttach.h"

#include <cstring>
#include <string>
#include <vector>

#include "messaging/sms/SmIo.h"
#include "platform/Os.h"

namespace {
constexpr size_t kFileNameMax = 256;
constexpr size_t kContentIdMax = 128;
}  // namespace

CSmAttach::CSmAttach() : CSmMedia(SMOBJ_ATTACH) {
  m_szFileName[0] = '\0';
  m_szContentID[0] = '\0';
}

int CSmAttach::StoredSize() const {
  // The size field is public; never trust it beyond the block actually held.
  if (!m_pvRawData || m_nSize <= 0) return 0;
  return m_nSize < m_nRawSize ? m_nSize : m_nRawSize;
}

void* CSmAttach::GetData() {
  return m_pvRawData;
}

int CSmAttach::GetLength() const {
  return m_nSize;
}

bool CSmAttach::SetData(const unsigned char* p, int n, const char* fileName,
                        const char* contentId) {
  std::vector<unsigned char> copy;
  if (p && n > 0) copy.assign(p, p + n);
  // The names may be this item's own fields: copy them before clearing.
  std::string name = fileName ? fileName : "", id = contentId ? contentId : "";
  FreeData();
  m_nSize = 0;
  m_szFileName[0] = '\0';
  m_szContentID[0] = '\0';
  hs::sms::CopyCut(m_szFileName, name.c_str(), kFileNameMax);
  hs::sms::CopyCut(m_szContentID, id.c_str(), kContentIdMax);
  if (copy.empty() || !CSmMedia::SetData(copy.data(), n)) return false;
  m_nSize = n;
  return true;
}

void CSmAttach::SetBuildInFlag(bool flag) {
  m_bBuildInHtml = flag;
}

bool CSmAttach::GetBuildInFlag() const {
  return m_bBuildInHtml;
}

const char* CSmAttach::GetFileName() const {
  return m_szFileName;
}

const char* CSmAttach::GetContentID() const {
  return m_szContentID;
}

CSmMedia* CSmAttach::Clone() const {
  return new CSmAttach(*this);
}

int CSmAttach::EstimateEncodeSize(bool, ME_SMS_ENCODE) const {
  return 0;
}

int CSmAttach::Encoder(ME_SMS_ENCODE, unsigned char*&, int&) {
  return 0;
}

bool CSmAttach::PackData(const char* prefix, CPackageBlk& blk) const {
  using namespace hs::sms;
  CSmMedia::PackData(prefix, blk);
  PutInt(blk, prefix, ".m_nSize", m_nSize);
  PutText(blk, prefix, ".m_szFileName", m_szFileName);
  PutText(blk, prefix, ".m_szContentID", m_szContentID);
  PutInt(blk, prefix, ".m_bBuildInHtml", m_bBuildInHtml ? 1 : 0);
  return true;
}

bool CSmAttach::UnpackData(const char* prefix, CUnpackageBlk& blk) {
  using namespace hs::sms;
  CSmMedia::UnpackData(prefix, blk);
  m_nSize = 0;
  m_szFileName[0] = '\0';
  m_szContentID[0] = '\0';
  m_bBuildInHtml = false;
  GetInt(blk, prefix, ".m_nSize", &m_nSize);
  m_nSize = StoredSize();
  GetText(blk, prefix, ".m_szFileName", m_szFileName, sizeof m_szFileName);
  GetText(blk, prefix, ".m_szContentID", m_szContentID, sizeof m_szContentID);
  int32_t flag = 0;
  if (GetInt(blk, prefix, ".m_bBuildInHtml", &flag)) m_bBuildInHtml = flag != 0;
  return true;
}

bool CSmAttach::Load(CArchive& ar) {
  int32_t n = 0, flag = 0;
  CString name, id;
  ar >> n;
  if (!ar.IsGood() || !ar.ReadString(name) || !ar.ReadString(id)) return false;
  std::vector<uint8_t> bytes;
  if (!hs::sms::ReadBlock(ar, n, &bytes)) return false;
  ar >> flag;
  if (!ar.IsGood()) return false;
  SetData(bytes.data(), n, name.c_str(), id.c_str());
  m_bBuildInHtml = flag != 0;
  return true;
}

bool CSmAttach::Save(CArchive& ar) {
  int n = StoredSize();
  ar << static_cast<uint8_t>(m_eType) << static_cast<int32_t>(n);
  ar.WriteString(m_szFileName, std::strlen(m_szFileName));
  ar.WriteString(m_szContentID, std::strlen(m_szContentID));
  if (n > 0) ar.Write(m_pvRawData, static_cast<size_t>(n));
  ar << static_cast<int32_t>(m_bBuildInHtml ? 1 : 0);
  return ar.IsGood();
}

bool CSmAttach::SaveAs(const char* path) const {
  if (!path) return false;
  return hs::os::WriteFileAtomic(path, m_pvRawData, static_cast<size_t>(StoredSize()));
}

CSmMedia* CSmAttach::_IeDecoder(unsigned char*&) {
  return nullptr;
}
