#include "handset/melody/FormatRegistry.h"

#include <cstdio>
#include <cstring>

#include "handset/platform/Config.h"
#include "handset/platform/Resources.h"

MELODY_FORMAT_TABLE g_MelodyFormatArray[16];
int g_nMelodyFmtCount = 16;
MELODY_FORMAT_TABLE g_AUXAudioFormatArray[7];
int g_nAUXAudioFmtCount = 7;
MELODY_FORMAT_TABLE g_MMSAudioFormatArray[16];
int g_nMMSAudioFmtCount = 16;

namespace {

struct Named {
  uint32_t bit;
  const char* name;
};

// The order of the text form.
const Named kTextNames[] = {
    {MDYFMT_LEGACY, "LEGACY"},   {MDYFMT_IMELODY, "IMELODY"}, {MDYFMT_EMELODY, "EMELODY"},
    {MDYFMT_GMIDI, "GMIDI"},     {MDYFMT_SPMIDI, "SPMIDI"},   {MDYFMT_MMF_MA2, "MMF_MA2"},
    {MDYFMT_MMF_MA3, "MMF_MA3"}, {MDYFMT_MMF_MA5, "MMF_MA5"}, {MDYFMT_WAVE, "WAVE"},
    {MDYFMT_AMR, "AMR"},         {MDYFMT_MIF, "MIF"},         {MDYFMT_XMI, "XMI"},
    {MDYFMT_AUF, "AUF"},         {MDYFMT_XAU, "XAU"},         {MDYFMT_EXT_HIGH, "EXT_HIGH"},
    {MDYFMT_EXT_MID, "EXT_MID"}, {MDYFMT_EXT_LOW, "EXT_LOW"},
};

void SetRow(MELODY_FORMAT_TABLE& row, const char* name, const char* filter, unsigned res,
            uint32_t fmt) {
  row.strFmtName = name;
  row.strFilter = filter;
  row.strDescription = HsLoadCString(res);
  row.dwMdyFmt = fmt;
}

bool Contains(const CString& hay, const CString& needle) {
  return hay.find(needle) != std::string::npos;
}

int CompareNoCase(const CString& a, const char* b) {
  return a.CompareNoCase(b);
}

// OR (or, with `firstOnly`, the first) of the rows whose filter extension matches the path's.
MDYFMT MatchExtension(const MELODY_FORMAT_TABLE* rows, int count, const char* path,
                      bool firstOnly) {
  CString ext = GetFileType(path);
  if (ext.IsEmpty()) return 0;
  MDYFMT result = 0;
  for (int i = 0; i <= count - 2; ++i) {
    const MELODY_FORMAT_TABLE& row = rows[i];
    if (row.strFmtName.IsEmpty()) continue;
    if (GetFileType(row.strFilter.c_str()).CompareNoCase(ext.c_str()) != 0) continue;
    if (firstOnly) return row.dwMdyFmt;
    result |= row.dwMdyFmt;
  }
  return result;
}

MDYFMT MatchName(const MELODY_FORMAT_TABLE* rows, int count, const char* name) {
  if (!name) return 0;
  for (int i = 0; i < count; ++i)
    if (CompareNoCase(rows[i].strFmtName, name) == 0) return rows[i].dwMdyFmt;
  return 0;
}

MELODY_FORMAT_TABLE* MatchFormat(MELODY_FORMAT_TABLE* rows, int count, MDYFMT fmt) {
  for (int i = 0; i < count - 1; ++i)
    if (rows[i].dwMdyFmt == fmt) return &rows[i];
  return nullptr;
}

bool StartsWith(const unsigned char* data, const char* magic) {
  return std::memcmp(data, magic, std::strlen(magic)) == 0;
}

}  // namespace

int IsMP3Enabled() {
  return (g_bMP3GlobalOn && CMP3Toolbox::IsCodecInstalled()) ? 1 : 0;
}

void InitialMelodyFormatArray() {
  MELODY_FORMAT_TABLE* t = g_MelodyFormatArray;
  int n = 0;
  SetRow(t[n++], "GMIDI", "*.mid|*.midi", IDS_FMT_MIDI_RINGTONE, MDYFMT_GMIDI);
  SetRow(t[n++], "SPMIDI", "*.mid", IDS_FMT_MIDI_RINGTONE, MDYFMT_SPMIDI);
  SetRow(t[n++], "IMELODY", "*.imy", IDS_FMT_MIDI_RINGTONE, MDYFMT_IMELODY);
  SetRow(t[n++], "EMELODY", "*.emy", IDS_FMT_MIDI_RINGTONE, MDYFMT_EMELODY);
  SetRow(t[n++], "MMF_MA2", "*.mmf", IDS_FMT_SMAF, MDYFMT_MMF_MA2);
  SetRow(t[n++], "MMF_MA3", "*.mmf", IDS_FMT_SMAF, MDYFMT_MMF_MA3);
  SetRow(t[n++], "MMF_MA5", "*.mmf", IDS_FMT_SMAF, MDYFMT_MMF_MA5);
  SetRow(t[n++], "WAVE", "*.wav", IDS_FMT_WAVE, MDYFMT_WAVE);
  SetRow(t[n++], "QVM_MIDFMT", "*.xmi", IDS_FMT_XMI, MDYFMT_XMI);
  if (IsMP3Enabled()) SetRow(t[n++], "MP3", "*.mp3", IDS_FMT_MP3, MDYFMT_MP3);
  SetRow(t[n++], "3GP", "*.3gp", IDS_FMT_3GP, MDYFMT_3GP);

  // The accumulated filter keeps a "|" after every row but the first, even when the row's filter
  // was already present; readers split on "|" and skip the empty pieces.
  CString joined;
  for (int i = 0; i < n; ++i) {
    if (!Contains(joined, t[i].strFilter)) joined += t[i].strFilter;
    if (i > 0) joined += "|";
  }
  SetRow(t[n++], "QV_UNKNOW", joined.c_str(), IDS_FMT_ALL_MELODY, MDYFMT_NONE);
  for (int i = n; i < 16; ++i) t[i] = MELODY_FORMAT_TABLE{};
  g_nMelodyFmtCount = n;
}

void InitialAudioFormatArray() {
  MELODY_FORMAT_TABLE* t = g_AUXAudioFormatArray;
  int n = 0;
  SetRow(t[n++], "WAVE", "*.wav", IDS_FMT_AUX_WAVE, MDYFMT_WAVE);
  SetRow(t[n++], "AMR", "*.amr", IDS_FMT_AUX_AMR, MDYFMT_AMR);
  if (IsMP3Enabled()) SetRow(t[n++], "MP3", "*.mp3", IDS_FMT_MP3, MDYFMT_MP3);
  SetRow(t[n++], "3GP", "*.3gp", IDS_FMT_3GP, MDYFMT_3GP);
  SetRow(t[n++], "AUF", "*.auf", IDS_FMT_AUF, MDYFMT_AUF);
  SetRow(t[n++], "XAU", "*.xau", IDS_FMT_XAU, MDYFMT_XAU);
  CString joined;
  for (int i = 0; i < n; ++i) {
    if (i > 0) joined += "|";
    joined += t[i].strFilter;
  }
  SetRow(t[n++], "ALL", joined.c_str(), IDS_FMT_AUX_ALL, MDYFMT_NONE);
  for (int i = n; i < 7; ++i) t[i] = MELODY_FORMAT_TABLE{};
  g_nAUXAudioFmtCount = n;
}

MDYFMT GetMDYFMTByMdyName(const char* name) {
  return MatchName(g_MelodyFormatArray, g_nMelodyFmtCount, name);
}

MDYFMT GetMDYFMTByAuxName(const char* name) {
  return MatchName(g_AUXAudioFormatArray, g_nAUXAudioFmtCount, name);
}

MDYFMT GetMDYFMTByMdyFileType(const char* path) {
  return MatchExtension(g_MelodyFormatArray, g_nMelodyFmtCount, path, false);
}

MDYFMT GetMDYFMTByAuxFileType(const char* path) {
  return MatchExtension(g_AUXAudioFormatArray, g_nAUXAudioFmtCount, path, true);
}

MDYFMT _IsMmsMdyFormatType(const char* path) {
  return MatchExtension(g_MMSAudioFormatArray, g_nMMSAudioFmtCount, path, false);
}

MELODY_FORMAT_TABLE* GetMdyTableByFmt(MDYFMT fmt) {
  return MatchFormat(g_MelodyFormatArray, g_nMelodyFmtCount, fmt);
}

MELODY_FORMAT_TABLE* GetAuxMdyTableByFmt(MDYFMT fmt) {
  return MatchFormat(g_AUXAudioFormatArray, g_nAUXAudioFmtCount, fmt);
}

MDYFMT GetMdyFmtByMdyDataCont(const unsigned char* data, int length) {
  if (!data || length <= 4) return 0;
  if (StartsWith(data, "MThd")) return MDYFMT_ANY_MIDI;
  if (StartsWith(data, "MMMD")) return MDYFMT_ANY_MMF;
  if (StartsWith(data, "RIFF")) return MDYFMT_WAVE;
  return 0;
}

MDYFMT GetMdyFmtByAuxDataCont(const unsigned char* data, int length) {
  if (!data) return 0;
  if (length > 4 && StartsWith(data, "RIFF")) return MDYFMT_WAVE;
  // "#!AMR" also covers the wide-band and multichannel magics, which share its first five bytes.
  if (length > 5 && StartsWith(data, "#!AMR")) return MDYFMT_AMR;
  if (length > 8 && StartsWith(data, "#!AMR-WB")) return MDYFMT_AMR;
  if (length > 11 && StartsWith(data, "#!AMR_MC1.0")) return MDYFMT_AMR;
  if (length > 14 && StartsWith(data, "#!AMR-WB_MC1.0")) return MDYFMT_AMR;
  return 0;
}

MDYFMT _IsMelodyFormatType(const char* path) {
  MDYFMT fmt = GetMDYFMTByMdyFileType(path);
  return fmt ? fmt : GetMDYFMTByAuxFileType(path);
}

MDYFMT _GetSoundFileFormatType(const char* path, int bReadContent) {
  MDYFMT fmt = _IsMelodyFormatType(path);
  if (fmt || !bReadContent || !path) return fmt;
  unsigned char buffer[20] = {0};
  std::FILE* f = std::fopen(path, "rb");
  if (!f) return 0;
  size_t got = std::fread(buffer, 1, sizeof(buffer), f);
  (void)got;  // a shorter file is compared with its zeroed tail, as the format rule says
  std::fclose(f);
  return GetMdyFmtByAuxDataCont(buffer, 20) | GetMdyFmtByMdyDataCont(buffer, 20);
}

CString TransToMdyFormatSTR(MDYFMT fmt) {
  CString text;
  for (const Named& n : kTextNames)
    if (fmt & n.bit) {
      text += n.name;
      text += ",";
    }
  return text;
}

MDYFMT MdyFormatSTRToRawMdyFmt(const char* text) {
  if (!text) return 0;
  CxStringList pieces;
  pieces.AddTokens(text, ",");
  MDYFMT fmt = 0;
  for (const CString& piece : pieces)
    for (const Named& n : kTextNames)
      if (piece == n.name) fmt |= n.bit;
  return fmt;
}
