#pragma once

#include <cstddef>
#include <cstdint>

#include "handset/export.h"

/// The MIME content type of an MMS media object. The values are stored in package blocks and
/// never change meaning; types outside this list are MIME_CNT_UNKNOWN (the media object keeps
/// their text).
enum EMimeCntType : int32_t {
  MIME_CNT_UNKNOWN = 0,
  MIME_CNT_TEXT_PLAIN = 1,        ///< text/plain (.txt)
  MIME_CNT_TEXT_HTML = 2,         ///< text/html (.html, .htm)
  MIME_CNT_TEXT_VCARD = 3,        ///< text/x-vCard (.vcf)
  MIME_CNT_TEXT_VCALENDAR = 4,    ///< text/x-vCalendar (.vcs)
  MIME_CNT_TEXT_IMELODY = 5,      ///< text/x-iMelody (.imy)
  MIME_CNT_APP_SMIL = 6,          ///< application/smil (.smil, .smi)
  MIME_CNT_IMAGE_GIF = 7,         ///< image/gif
  MIME_CNT_IMAGE_JPEG = 8,        ///< image/jpeg (.jpg, .jpeg)
  MIME_CNT_IMAGE_PNG = 9,         ///< image/png
  MIME_CNT_IMAGE_WBMP = 10,       ///< image/vnd.wap.wbmp
  MIME_CNT_IMAGE_BMP = 11,        ///< image/bmp
  MIME_CNT_AUDIO_AMR = 12,        ///< audio/amr
  MIME_CNT_AUDIO_MIDI = 13,       ///< audio/midi (.mid, .midi)
  MIME_CNT_AUDIO_SPMIDI = 14,     ///< audio/sp-midi
  MIME_CNT_AUDIO_MPEG = 15,       ///< audio/mpeg (.mp3)
  MIME_CNT_AUDIO_WAV = 16,        ///< audio/wav
  MIME_CNT_AUDIO_AAC = 17,        ///< audio/aac
  MIME_CNT_AUDIO_MP4 = 18,        ///< audio/mp4 (.m4a)
  MIME_CNT_APP_SMAF = 19,         ///< application/vnd.smaf (.mmf)
  MIME_CNT_VIDEO_3GPP = 20,       ///< video/3gpp (.3gp)
  MIME_CNT_VIDEO_3GPP2 = 21,      ///< video/3gpp2 (.3g2)
  MIME_CNT_VIDEO_MP4 = 22,        ///< video/mp4
  MIME_CNT_APP_XHTML = 23,        ///< application/xhtml+xml (.xhtml)
  MIME_CNT_APP_OCTET_STREAM = 24  ///< application/octet-stream
};

/// The MIME text of `type` ("image/gif"); null for MIME_CNT_UNKNOWN and values outside the list.
HANDSET_API const char* MmsMimeTypeName(EMimeCntType type);
/// The type of a MIME text (parameters and ASCII case ignored, common aliases such as
/// "audio/x-amr" or "image/jpg" accepted); MIME_CNT_UNKNOWN when not in the list.
HANDSET_API EMimeCntType MmsMimeTypeFromName(const char* mime);
/// The type that the extension of `fileName` stands for; MIME_CNT_UNKNOWN when none.
HANDSET_API EMimeCntType MmsMimeTypeFromFileName(const char* fileName);
/// The type recognised from the first bytes of a file (GIF, JPEG, PNG, BMP, AMR, MIDI, SMAF, MP3,
/// WAVE, MP4/3GP, vCard, vCalendar, iMelody, SMIL); MIME_CNT_UNKNOWN when none matches.
HANDSET_API EMimeCntType MmsMimeTypeFromData(const uint8_t* data, size_t size);
/// The usual file extension of `type` without the dot ("gif"); null when it has none.
HANDSET_API const char* MmsMimeTypeExtension(EMimeCntType type);
