#include "handset/messaging/MmsMimeType.h"

#include <cstring>
#include <string>

#include "handset/platform/Strings.h"
#include "messaging/mms/MimeText.h"
#include "messaging/mms/WspTables.h"

namespace {

struct MimeRow {
  EMimeCntType type;
  const char* name;
  const char* ext;         ///< the usual extension
  const char* extensions;  ///< every extension, space-separated, lower case
  const char* aliases;     ///< other MIME texts phones send for it, space-separated
};

const MimeRow kMimeRows[] = {
    {MIME_CNT_TEXT_PLAIN, "text/plain", "txt", "txt text", ""},
    {MIME_CNT_TEXT_HTML, "text/html", "html", "html htm", ""},
    {MIME_CNT_TEXT_VCARD, "text/x-vCard", "vcf", "vcf", "text/vcard text/directory"},
    {MIME_CNT_TEXT_VCALENDAR, "text/x-vCalendar", "vcs", "vcs ics", "text/calendar"},
    {MIME_CNT_TEXT_IMELODY, "text/x-iMelody", "imy", "imy",
     "audio/imelody audio/x-imelody text/iMelody"},
    {MIME_CNT_APP_SMIL, "application/smil", "smil", "smil smi", "application/smil+xml"},
    {MIME_CNT_IMAGE_GIF, "image/gif", "gif", "gif", ""},
    {MIME_CNT_IMAGE_JPEG, "image/jpeg", "jpg", "jpg jpeg jpe", "image/jpg image/pjpeg"},
    {MIME_CNT_IMAGE_PNG, "image/png", "png", "png", ""},
    {MIME_CNT_IMAGE_WBMP, "image/vnd.wap.wbmp", "wbmp", "wbmp", ""},
    {MIME_CNT_IMAGE_BMP, "image/bmp", "bmp", "bmp", "image/x-bmp image/x-ms-bmp"},
    {MIME_CNT_AUDIO_AMR, "audio/amr", "amr", "amr", "audio/x-amr"},
    {MIME_CNT_AUDIO_MIDI, "audio/midi", "mid", "mid midi", "audio/mid audio/x-midi audio/x-mid"},
    {MIME_CNT_AUDIO_SPMIDI, "audio/sp-midi", "spm", "spm", ""},
    {MIME_CNT_AUDIO_MPEG, "audio/mpeg", "mp3", "mp3", "audio/mp3 audio/x-mp3 audio/mpeg3"},
    {MIME_CNT_AUDIO_WAV, "audio/wav", "wav", "wav", "audio/x-wav audio/wave"},
    {MIME_CNT_AUDIO_AAC, "audio/aac", "aac", "aac", "audio/x-aac"},
    {MIME_CNT_AUDIO_MP4, "audio/mp4", "m4a", "m4a", "audio/x-m4a"},
    {MIME_CNT_APP_SMAF, "application/vnd.smaf", "mmf", "mmf", "application/x-smaf"},
    {MIME_CNT_VIDEO_3GPP, "video/3gpp", "3gp", "3gp", "audio/3gpp"},
    {MIME_CNT_VIDEO_3GPP2, "video/3gpp2", "3g2", "3g2", "audio/3gpp2"},
    {MIME_CNT_VIDEO_MP4, "video/mp4", "mp4", "mp4", ""},
    {MIME_CNT_APP_XHTML, "application/xhtml+xml", "xhtml", "xhtml",
     "application/vnd.wap.xhtml+xml"},
    {MIME_CNT_APP_OCTET_STREAM, "application/octet-stream", "bin", "bin", ""},
};

bool InList(const std::string& item, const char* list) {
  std::string padded = std::string(" ") + list + " ";
  return !item.empty() && padded.find(" " + item + " ") != std::string::npos;
}

std::string Lower(const char* s) {
  std::string out(s ? s : "");
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

bool StartsWith(const uint8_t* d, size_t n, const char* tag) {
  size_t len = std::strlen(tag);
  return n >= len && std::memcmp(d, tag, len) == 0;
}

/// The first non-blank text of a file (after any byte-order mark), lower case, at most 64 bytes.
std::string LeadingText(const uint8_t* data, size_t size) {
  std::string text = hs::mms::SniffTextToUtf8(data, size < 256 ? size : 256);
  size_t b = text.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return std::string();
  return Lower(text.substr(b, 64).c_str());
}

/// Text in UTF-8 (or UTF-16 with a byte-order mark) without control characters other than
/// blanks and line ends, judged by its first 512 bytes.
bool LooksLikeText(const uint8_t* d, size_t n) {
  if (n >= 2 && ((d[0] == 0xFF && d[1] == 0xFE) || (d[0] == 0xFE && d[1] == 0xFF))) return true;
  size_t len = n < 512 ? n : 512;
  while (len > 0 && len < n && (d[len] & 0xC0) == 0x80) --len;  // keep whole characters
  for (size_t i = 0; i < len; ++i)
    if (d[i] < 0x20 && d[i] != '\t' && d[i] != '\r' && d[i] != '\n') return false;
  return hs::mms::IsUtf8(reinterpret_cast<const char*>(d), len);
}

EMimeCntType FromIsoMedia(const uint8_t* d, size_t n) {
  if (n < 12 || std::memcmp(d + 4, "ftyp", 4) != 0) return MIME_CNT_UNKNOWN;
  std::string brand(reinterpret_cast<const char*>(d + 8), 4);
  if (brand.compare(0, 3, "3gp") == 0) return MIME_CNT_VIDEO_3GPP;
  if (brand.compare(0, 3, "3g2") == 0) return MIME_CNT_VIDEO_3GPP2;
  if (brand == "M4A ") return MIME_CNT_AUDIO_MP4;
  return MIME_CNT_VIDEO_MP4;
}

}  // namespace

const char* MmsMimeTypeName(EMimeCntType type) {
  for (const MimeRow& r : kMimeRows)
    if (r.type == type) return r.name;
  return nullptr;
}

EMimeCntType MmsMimeTypeFromName(const char* mime) {
  std::string m = Lower(mime);
  size_t semi = m.find(';');
  if (semi != std::string::npos) m.resize(semi);
  while (!m.empty() && (m.back() == ' ' || m.back() == '\t')) m.pop_back();
  size_t b = m.find_first_not_of(" \t");
  m = b == std::string::npos ? std::string() : m.substr(b);
  for (const MimeRow& r : kMimeRows)
    if (m == Lower(r.name) || InList(m, Lower(r.aliases).c_str())) return r.type;
  return MIME_CNT_UNKNOWN;
}

EMimeCntType MmsMimeTypeFromFileName(const char* fileName) {
  std::string ext = Lower(GetFileType(fileName).c_str());
  for (const MimeRow& r : kMimeRows)
    if (InList(ext, r.extensions)) return r.type;
  return MIME_CNT_UNKNOWN;
}

EMimeCntType MmsMimeTypeFromData(const uint8_t* d, size_t n) {
  if (!d || n == 0) return MIME_CNT_UNKNOWN;
  if (StartsWith(d, n, "GIF87a") || StartsWith(d, n, "GIF89a")) return MIME_CNT_IMAGE_GIF;
  if (n >= 3 && d[0] == 0xFF && d[1] == 0xD8 && d[2] == 0xFF) return MIME_CNT_IMAGE_JPEG;
  if (StartsWith(d, n, "\x89PNG\r\n\x1a\n")) return MIME_CNT_IMAGE_PNG;
  if (StartsWith(d, n, "BM") && n >= 14) return MIME_CNT_IMAGE_BMP;
  if (StartsWith(d, n, "#!AMR")) return MIME_CNT_AUDIO_AMR;
  if (StartsWith(d, n, "MThd")) return MIME_CNT_AUDIO_MIDI;
  if (StartsWith(d, n, "MMMD")) return MIME_CNT_APP_SMAF;
  if (StartsWith(d, n, "ID3") || (n >= 2 && d[0] == 0xFF && (d[1] & 0xE6) == 0xE2))
    return MIME_CNT_AUDIO_MPEG;
  if (n >= 12 && StartsWith(d, n, "RIFF") && std::memcmp(d + 8, "WAVE", 4) == 0)
    return MIME_CNT_AUDIO_WAV;
  EMimeCntType iso = FromIsoMedia(d, n);
  if (iso != MIME_CNT_UNKNOWN) return iso;
  std::string text = LeadingText(d, n);
  if (text.compare(0, 11, "begin:vcard") == 0) return MIME_CNT_TEXT_VCARD;
  if (text.compare(0, 15, "begin:vcalendar") == 0) return MIME_CNT_TEXT_VCALENDAR;
  if (text.compare(0, 13, "begin:imelody") == 0) return MIME_CNT_TEXT_IMELODY;
  if (text.compare(0, 5, "<smil") == 0) return MIME_CNT_APP_SMIL;
  return LooksLikeText(d, n) ? MIME_CNT_TEXT_PLAIN : MIME_CNT_UNKNOWN;
}

const char* MmsMimeTypeExtension(EMimeCntType type) {
  for (const MimeRow& r : kMimeRows)
    if (r.type == type) return r.ext;
  return nullptr;
}
