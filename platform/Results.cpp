#include "handset/platform/Results.h"

namespace {

struct Entry {
  int code;
  const char* text;
};

const Entry kMidiFile[] = {
    {hs::midifile::kOk, "success"},
    {hs::midifile::kErrOpen, "file cannot be opened or created"},
    {hs::midifile::kErrNotMThd, "header is not \"MThd\" with length 6"},
    {hs::midifile::kErrTooShort, "data shorter than 15 bytes"},
    {hs::midifile::kErrBusy, "a load is already in progress"},
    {hs::midifile::kErrNoMemory, "memory allocation failed"},
    {hs::midifile::kErrShortRead, "short read"},
    {hs::midifile::kErrTrackCount, "declared track count 0, or format 0 with more than one track"},
    {hs::midifile::kErrFormat, "format above 1 on load; format other than 0 or 1 on write"},
    {hs::midifile::kErrNotMTrk, "a track chunk does not start with \"MTrk\""},
    {hs::midifile::kErrTrackOverrun, "a track chunk runs past the end of the data"},
    {hs::midifile::kErrNotLoaded, "no file loaded"},
    {hs::midifile::kErrNothingProduced, "nothing was produced"},
    {hs::midifile::kErrNoTrackToWrite, "format 0 write with no track"},
    {hs::midifile::kErrTrackIndex, "track index out of range"},
    {hs::midifile::kErrNoTrack, "no track"},
    {hs::midifile::kErrTrackInsert, "track insert failed"},
    {hs::midifile::kErrNoteNoTrack, "a note found no track"},
    {hs::midifile::kErrNoMip, "no MIP data was read"},
    {hs::midifile::kErrNoData, "null data or zero length"},
};

const Entry kImy2Mid[] = {
    {hs::imy2mid::kOk, "success"},
    {hs::imy2mid::kErrHeader, "empty text, or header check failed"},
    {hs::imy2mid::kErrWord,
     "an \"l\", \"v\" or \"back\" word that is not one of the allowed words"},
    {hs::imy2mid::kErrTrackIndex, "track index out of range"},
    {hs::imy2mid::kErrNoTrack, "no track"},
    {hs::imy2mid::kErrTrackInsert, "track insert failed"},
    {hs::imy2mid::kErrTooLong, "melody expands to more notes than allowed"},
    {hs::imy2mid::kErrNoFile, "note added with no file object"},
};

const Entry kMid2Imy[] = {
    {hs::mid2imy::kOk, "success"},
    {hs::mid2imy::kErrMultiTrack, "the file holds more than one track"},
    {hs::mid2imy::kErrNoEnabledTrack, "no enabled track (melody left empty)"},
    {hs::mid2imy::kErrNullFile, "null file"},
};

const Entry kSmaf[] = {
    {hs::smaf::kOk, "success"},
    {hs::smaf::kErrPath, "null path to open, or empty path when saving"},
    {hs::smaf::kErrOpen, "the file cannot be opened for reading"},
    {hs::smaf::kErrNoMemory, "out of memory"},
    {hs::smaf::kErrShortRead, "short read"},
    {hs::smaf::kErrEmpty, "empty file"},
    {hs::smaf::kErrType, "unsupported type"},
    {hs::smaf::kErrNotOpen, "not open"},
    {hs::smaf::kErrTrack, "track outside 0..15, not valid, or its score track not found"},
    {hs::smaf::kErrLedChannel, "LED channel out of range"},
    {hs::smaf::kErrChecksum, "checksum mismatch or file too short; or \"CNTI\" not found"},
    {hs::smaf::kErrStatusPastEnd, "a score track's channel-status bytes lie past the end"},
    {hs::smaf::kErrTooManyTracks, "more than four score tracks"},
    {hs::smaf::kErrNoImage, "no image to patch or to save"},
    {hs::smaf::kErrCrcRewrite, "the checksum could not be rewritten"},
    {hs::smaf::kErrTrackNumber, "the score track's number byte does not match"},
    {hs::smaf::kErrNoData, "null data or size 0"},
    {hs::smaf::kErrCreate, "the output file cannot be created"},
    {hs::smaf::kErrNoCnti, "\"CNTI\" not found when inserting the LED label"},
};

const Entry kTrack[] = {
    {hs::track::kOk, "success"},
    {hs::track::kErrFailed, "the track or note operation failed"},
};

const Entry kMmsPdu[] = {
    {hs::mmspdu::kOk, "success"},
    {hs::mmspdu::kErrEmpty, "no data"},
    {hs::mmspdu::kErrNotMms, "not an MMS PDU: it does not start with X-Mms-Message-Type"},
    {hs::mmspdu::kErrTruncated, "a header value or body part runs past the end of the data"},
    {hs::mmspdu::kErrBadValue, "a header value is malformed"},
    {hs::mmspdu::kErrBadHeader, "a header field name is malformed"},
    {hs::mmspdu::kErrBadBody, "the multipart body is malformed"},
    {hs::mmspdu::kErrTooLarge, "the message is too large to encode"},
    {hs::mmspdu::kErrFolder, "the output folder does not exist and cannot be created"},
    {hs::mmspdu::kErrWrite, "a part could not be written"},
};

const Entry kSms[] = {
    {hs::sms::kOk, "success"},
    {hs::sms::kErrHex, "not a whole number of octets in hex digits"},
    {hs::sms::kErrTruncated, "the PDU ends inside its fields"},
    {hs::sms::kErrReservedType, "reserved message type (TP-MTI 3)"},
    {hs::sms::kErrUdlRange, "user data length above 160 septets or 140 octets"},
    {hs::sms::kErrUdShort, "fewer user data octets than the user data length needs"},
    {hs::sms::kErrUdhLength, "user data header longer than the user data"},
    {hs::sms::kErrCompressed, "compressed user data is not supported"},
    {hs::sms::kErrAddress, "address longer than 20 digits"},
    {hs::sms::kErrItemTooLarge, "an item is too large for one segment"},
    {hs::sms::kErrTrailing, "octets left after the user data"},
    {hs::sms::kErrNumber, "the number has no digits or more than 20"},
    {hs::sms::kErrTooManySegments, "the message needs more than 255 segments"},
};

struct Table {
  const char* name;
  const Entry* entries;
  int count;
};

template <int N>
constexpr Table MakeTable(const char* name, const Entry (&e)[N]) {
  return {name, e, N};
}

const Table kTables[HS_RESULT_FAMILY_COUNT] = {
    MakeTable("midi-file", kMidiFile),
    MakeTable("imelody-to-midi", kImy2Mid),
    MakeTable("midi-to-imelody", kMid2Imy),
    MakeTable("smaf", kSmaf),
    MakeTable("track", kTrack),
    MakeTable("mms-pdu", kMmsPdu),
    MakeTable("sms", kSms),
};

const Table* Find(HsResultFamily family) {
  if (family < 0 || family >= HS_RESULT_FAMILY_COUNT) return nullptr;
  return &kTables[family];
}

}  // namespace

const char* HsResultText(HsResultFamily family, int code) {
  if (const Table* t = Find(family))
    for (int i = 0; i < t->count; ++i)
      if (t->entries[i].code == code) return t->entries[i].text;
  return "unknown result code";
}

const int* HsResultCodes(HsResultFamily family, int* count) {
  // Read out of the tables once, so the list can never disagree with the texts.
  struct CodeLists {
    int codes[HS_RESULT_FAMILY_COUNT][64] = {};
    CodeLists() {
      for (int f = 0; f < HS_RESULT_FAMILY_COUNT; ++f)
        for (int i = 0; i < kTables[f].count && i < 64; ++i)
          codes[f][i] = kTables[f].entries[i].code;
    }
  };
  static const CodeLists lists;
  const Table* t = Find(family);
  if (count) *count = t ? t->count : 0;
  return t ? lists.codes[family] : nullptr;
}

const char* HsResultFamilyName(HsResultFamily family) {
  const Table* t = Find(family);
  return t ? t->name : "unknown";
}
