#pragma once

#include "handset/export.h"

/// Result families: each class family returns its own small int codes (0 is success). The names
/// below are the codes the library returns; `HsResultText` gives the text the CLI prints.
enum HsResultFamily {
  HS_RESULT_MIDI_FILE = 0,    ///< CMidFileElement loading, saving and editing
  HS_RESULT_IMELODY_TO_MIDI,  ///< CiMelody2Mid
  HS_RESULT_MIDI_TO_IMELODY,  ///< CMid2iMelody
  HS_RESULT_SMAF,             ///< CMMFInfo
  HS_RESULT_TRACK,            ///< CMidTrackElement / CMidNoteElement helpers (0 or -1)
  HS_RESULT_MMS_PDU,          ///< MMS PDU decoding and encoding, MMS part extraction
  HS_RESULT_SMS,              ///< short-message PDUs and user data
  HS_RESULT_FAMILY_COUNT
};

namespace hs {

/// CMidFileElement.
namespace midifile {
enum : int {
  kOk = 0,
  kErrOpen = 1,
  kErrNotMThd = 2,
  kErrTooShort = 3,
  kErrBusy = 4,
  kErrNoMemory = 5,
  kErrShortRead = 6,
  kErrTrackCount = 7,
  kErrFormat = 8,
  kErrNotMTrk = 9,
  kErrTrackOverrun = 10,
  kErrNotLoaded = 14,
  kErrNothingProduced = 15,
  kErrNoTrackToWrite = 16,
  kErrTrackIndex = 17,
  kErrNoTrack = 18,
  kErrTrackInsert = 19,
  kErrNoteNoTrack = 25,
  kErrNoMip = 27,
  kErrNoData = 29,
};
}  // namespace midifile

/// CiMelody2Mid.
namespace imy2mid {
enum : int {
  kOk = 0,
  kErrHeader = 1,
  kErrWord = 2,
  kErrTrackIndex = 17,
  kErrNoTrack = 18,
  kErrTrackInsert = 19,
  kErrTooLong = 20,
  kErrNoFile = -1,
};
}  // namespace imy2mid

/// CMid2iMelody.
namespace mid2imy {
enum : int {
  kOk = 0,
  kErrMultiTrack = 4,
  kErrNoEnabledTrack = 5,
  kErrNullFile = 7,
};
}  // namespace mid2imy

/// CMMFInfo.
namespace smaf {
enum : int {
  kOk = 0,
  kErrPath = 1,
  kErrOpen = 2,
  kErrNoMemory = 3,
  kErrShortRead = 4,
  kErrEmpty = 5,
  kErrType = 6,
  kErrNotOpen = 8,
  kErrTrack = 9,
  kErrLedChannel = 10,
  kErrChecksum = 11,
  kErrStatusPastEnd = 12,
  kErrTooManyTracks = 13,
  kErrNoImage = 14,
  kErrCrcRewrite = 15,
  kErrTrackNumber = 16,
  kErrNoData = 17,
  kErrCreate = 18,
  kErrNoCnti = -1,
};
}  // namespace smaf

/// Track and note helpers.
namespace track {
enum : int { kOk = 0, kErrFailed = -1 };
}  // namespace track

/// MMS PDU decoder and encoder (MmsDecodePdu, MmsEncodePdu, MmsExtractParts).
namespace mmspdu {
enum : int {
  kOk = 0,
  kErrEmpty = 1,
  kErrNotMms = 2,
  kErrTruncated = 3,
  kErrBadValue = 4,
  kErrBadHeader = 5,
  kErrBadBody = 6,
  kErrTooLarge = 7,
  kErrFolder = 8,
  kErrWrite = 9,
};
}  // namespace mmspdu

/// Short-message PDUs and user data (CSmPdu, CSmUserData, CSmContext encoders).
namespace sms {
enum : int {
  kOk = 0,
  kErrHex = 1,
  kErrTruncated = 2,
  kErrReservedType = 3,
  kErrUdlRange = 4,
  kErrUdShort = 5,
  kErrUdhLength = 6,
  kErrCompressed = 7,
  kErrAddress = 8,
  kErrItemTooLarge = 9,
  kErrTrailing = 10,
  kErrNumber = 11,
  kErrTooManySegments = 12,
};
}  // namespace sms

}  // namespace hs

/// The English text of `code` in `family`. Never null: an unknown code gives "unknown result
/// code". The text is static and owned by the library.
HANDSET_API const char* HsResultText(HsResultFamily family, int code);
/// The codes documented for `family`, for listing; `*count` receives their number.
HANDSET_API const int* HsResultCodes(HsResultFamily family, int* count);
/// A short name of the family ("midi-file", "smaf", ...).
HANDSET_API const char* HsResultFamilyName(HsResultFamily family);
