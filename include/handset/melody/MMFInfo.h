#pragma once

#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// Wave-conversion settings of the SMAF converter: four signed 32-bit fields.
struct MMF_WAVCNVT {
  int32_t nMode;           ///< converter mode: 1 in the 8-bit presets, 2 in the 16-bit ones
  int32_t nSampleRate;     ///< samples per second
  int32_t nBitsPerSample;  ///< 8 or 16
  int32_t nChannels;       ///< channel count
};

/// Default wave settings per synthesizer generation and quality.
extern HANDSET_API const MMF_WAVCNVT g_DEFAULT_MA2LOWQTY;
extern HANDSET_API const MMF_WAVCNVT g_DEFAULT_MA2HIQTY;
extern HANDSET_API const MMF_WAVCNVT g_DEFAULT_MA3LOWQTY;
extern HANDSET_API const MMF_WAVCNVT g_DEFAULT_MA3HIQTY;
extern HANDSET_API const MMF_WAVCNVT g_DEFAULT_MA5LOWQTY;
extern HANDSET_API const MMF_WAVCNVT g_DEFAULT_MA5HIQTY;

/// The editable properties of a SMAF (".mmf") ringtone: copy status, MA-2 LED channel, the
/// per-channel vibration switch of score tracks and a per-channel MA-3 LED switch (memory only).
///
/// The file image is held in memory. It is found by searching fixed byte labels, not by walking
/// the chunk tree, and every loaded file is treated as MA-2. Each change is patched into the image
/// at once with the trailing CRC-16 recomputed; the image reaches the disk on `SaveMMF`, on
/// `CloseMMF(1)` or in the destructor.
///
/// In MIDI-support mode (`InitMIDISupport`) there is no file: all 16 channels are valid, setters
/// keep their values in memory only and closing never saves. The MIDI file model uses this mode
/// to carry LED and vibration settings.
///
/// Results are the codes of `hs::smaf` (handset/platform/Results.h). Copies are deep: a copy owns
/// its own image, so a modified open copy saves on destruction like its source.
class HANDSET_API CMMFInfo {
 public:
  /// Closed, type -1, LED channel -1, no image.
  CMMFInfo();
  /// Saves pending changes (`CloseMMF(1)`) when open, then frees the image.
  virtual ~CMMFInfo();
  CMMFInfo(const CMMFInfo& other);
  CMMFInfo& operator=(const CMMFInfo& other);

  /// Loads and parses the file at `path`, closing (and saving) any open file first. Returns
  /// kOk; kErrPath for a null path; kErrOpen, kErrEmpty, kErrNoMemory or kErrShortRead when the
  /// file cannot be loaded (the object is then closed); a parse failure (kErrChecksum,
  /// kErrLedChannel, kErrStatusPastEnd, kErrTooManyTracks) leaves the object open with its
  /// image and the values parsed so far, and without a stored path.
  int OpenMMF(const char* path);
  /// As `OpenMMF` over a copy of `size` bytes at `data`; no path is stored, so saving needs an
  /// explicit path. Null data or size 0 gives kErrNoData.
  int OpenMMFBuf(const unsigned char* data, unsigned long size);
  /// Saves when modified, `save` is nonzero and not in MIDI-support mode (a save failure is
  /// ignored), then frees the image and resets every value. Always kOk.
  int CloseMMF(int save);
  /// Writes the image to `path`, or to the opened file's path when `path` is null, and clears
  /// the modified flag. kErrNotOpen; kOk without writing when nothing changed; kErrPath when
  /// there is no path; kErrNoImage; kErrCreate when the file cannot be created.
  int SaveMMF(const char* path);
  /// Switches to MIDI-support mode for type 2 (MA-2) or 3 (MA-3), else kErrType. Any open file
  /// is closed without saving.
  int InitMIDISupport(int type);

  int IsOpened() const;
  /// 0 when not open, else nonzero when a setter changed something since open or save.
  int IsModified() const;
  /// -1 none, 2 MA-2, 3 MA-3.
  int GetMMFType() const;
  /// Image size in bytes (0 in MIDI-support mode).
  unsigned long GetMMFSize() const;
  /// The image, owned by this object and valid until the next open, patch or close; null in
  /// MIDI-support mode or when nothing is loaded.
  unsigned char* GetMMFBuffer();
  /// Nonzero when channel `track` (0..15) belongs to a score track found at open.
  int IsValidTrack(int track) const;
  /// Always 0: ADPCM tracks are not counted.
  int GetADPCMNum() const;
  /// Does nothing; the image stays owned by this object. Returns 0.
  int ReleaseMMFBuffer();

  /// The copy status read at open (bit 0 set when a rights-holder notice is present). A closed
  /// object returns 8, the not-open code passed back as a status byte.
  unsigned char GetCopyStatus() const;
  /// Patches the copy status byte of the contents-info chunk. kErrNotOpen, kErrChecksum when no
  /// contents-info chunk is found, kErrNoImage, kErrCrcRewrite.
  int SetCopyStatus(unsigned char status);
  /// The MA-2 LED channel (-1 none). kErrNotOpen; kErrType unless the type is MA-2.
  int GetMA2LedStatus(int* channel) const;
  /// Sets the MA-2 LED channel (-1..15, else kErrLedChannel). A file without an LED item gains
  /// one (5 bytes) after the fixed contents-info bytes. kErrNotOpen, kErrNoCnti, kErrNoMemory,
  /// kErrNoImage, kErrCrcRewrite.
  int SetMA2LedStatus(int channel);
  /// `*on` = 1 when `track` is the MA-2 LED channel (always 0 for MA-3). kErrNotOpen.
  int GetTrackLedStatus(int track, int* on) const;
  /// The vibration switch of channel `track`. kErrNotOpen; kErrTrack for a channel outside
  /// 0..15 (nothing written) or not valid (0 written).
  int GetVibStatus(int track, int* on) const;
  /// The MA-3 LED switch of channel `track`; results as `GetVibStatus`.
  int GetMA3LedStatus(int track, int* on) const;
  /// Sets the vibration switch of a valid channel. The file bit is only ever set: switching off
  /// changes the reported value but leaves the file's bit on. kErrNotOpen, kErrTrack (bad
  /// channel or its score track not found), kErrTrackNumber, kErrStatusPastEnd, kErrNoImage,
  /// kErrCrcRewrite.
  int SetVibStatus(int track, int on);
  /// Sets the MA-3 LED switch of a valid channel, in memory only. kErrNotOpen, kErrTrack.
  int SetMA3LedStatus(int track, int on);

 protected:
  void _InitVariables();
  void _CreateCRCTable();
  int _LoadMMF(const char* path);
  int _CheckMMFType();
  int _ParseMA2();
  int _CheckCRC();
  uint16_t _CaculateCRC(const unsigned char* data, unsigned long size) const;
  int _CheckCopyStatus();
  int _CheckMA2Led();
  int _CheckMA2Vib();
  /// One past the first match of `label` at or after `start`, or -1. The last
  /// strlen(label) + 1 positions of the image are never matched.
  int _SearchLabel(const char* label, int start) const;
  int _ApplyCopyStatusChanged(unsigned char status);
  int _ApplyMA2LedChanged(int channel);
  int _ApplyMA2VibChanged(int track, int on);
  /// True when the trailing CRC could be rewritten (an image of more than 2 bytes).
  bool _UpdateCRCValue();
  int _SaveOutputFile(CString path, const unsigned char* data, unsigned long size);

  CString m_strFilePath;
  int32_t m_nMIDISupport;
  int32_t m_nADPCMNum;
  int32_t m_nChannelNum;
  uint16_t m_wCRCTable[256];
  int32_t m_nTrackValid[16];
  int32_t m_nVibStatus[16];
  int32_t m_nMA3LedStatus[16];
  uint8_t m_byteCopyStatus;
  int32_t m_nMA2LedChannel;
  int32_t m_nMMFType;
  uint32_t m_dwMMFSize;
  std::vector<unsigned char> m_MMFImage;
  int32_t m_bModified;
  int32_t m_bOpened;
};
