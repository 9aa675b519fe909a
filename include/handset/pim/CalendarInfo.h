#pragma once

#include <cstdint>
#include <ctime>

#include "handset/export.h"
#include "handset/platform/PackageBlk.h"
#include "handset/platform/Strings.h"

/// A calendar date and time of the phone: six 32-bit fields, 24 bytes, all zero when unset.
/// Times are local standard time: conversions never apply daylight saving, so a date never moves
/// by the daylight-saving hour on its way to a time value and back.
struct HANDSET_API ME_CAL_DATE {
  int32_t nYear;    ///< full year, such as 2007
  int32_t nMonth;   ///< 1-12
  int32_t nDay;     ///< 1-31
  int32_t nHour;    ///< 0-23
  int32_t nMinute;  ///< 0-59
  int32_t nSecond;  ///< 0-59

  ME_CAL_DATE() { Reset(); }
  /// The local date of `t`; all zero when `t` cannot be converted.
  explicit ME_CAL_DATE(time_t t);
  ME_CAL_DATE(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
      : nYear(year), nMonth(month), nDay(day), nHour(hour), nMinute(minute), nSecond(second) {}

  void Reset() { nYear = nMonth = nDay = nHour = nMinute = nSecond = 0; }
  /// The time value of this local date taken as standard time (the run-time library's mktime
  /// with the daylight flag 0). Fields out of range are normalised by mktime; -1 on failure.
  time_t ToTimeT() const;
  /// Sets the fields to the local standard-time date of `t`. Returns 1, or 0 (fields unchanged)
  /// when `t` cannot be converted.
  int FromTimeT(time_t t);
  /// 1 when 0 < year < 3000, the month is 1-12, the day is 1 up to the month's length, and the
  /// time of day is in range; else 0. February always allows 29 days: the phone accepts them.
  int IsValid() const;
  /// Chronological order of the fields (year first, second last): <0, 0 or >0. Fields are
  /// compared as they stand, valid or not.
  int Compare(const ME_CAL_DATE& other) const;
  bool operator==(const ME_CAL_DATE& o) const { return Compare(o) == 0; }
  bool operator!=(const ME_CAL_DATE& o) const { return Compare(o) != 0; }
};

/// Byte size of a calendar entry's stored image.
constexpr int CALINFO_IMAGE_SIZE = 4084;
/// Version word written beside the image.
constexpr uint16_t CALINFO_VERSION = 0x1010;

/// A calendar entry of the phone: a fixed record stored as one 4084-byte little-endian image.
/// The fields are public like those of a plain record; their sizes and order are the image's.
/// Text fields are NUL-terminated and filled in by the host (the array sizes are the limits).
class HANDSET_API CCalendarInfo {
 public:
  CCalendarInfo();

  /// Zeroes the entry's kind, the words and the dates, clears every text, and sets the repeat
  /// interval to 1 and the repeat count to 0x7FFFFFFF (no limit).
  void Empty();
  /// True when the entry's kind (the first word) is 0.
  bool IsEmpty() const { return m_nType == 0; }
  void SetHandle(uint32_t handle) { m_hHandle = handle; }
  uint32_t GetHandle() const { return m_hHandle; }
  void SetIndex(uint32_t index) { m_nIndex = index; }
  uint32_t GetIndex() const { return m_nIndex; }
  /// A readable multi-line description, for diagnostics.
  CString Dump() const;

  /// Writes ".CALINFO_VERSION" (2 bytes, 0x1010) and ".this" (the 4084-byte image) after
  /// `prefix` (null is ""). Returns 1.
  int PackData(const char* prefix, CPackageBlk& blk) const;
  /// Reads the two keys back and takes the image when it is present and exactly 4084 bytes. A
  /// ".CALINFO_VERSION" that is present and not the 2 bytes of 0x1010 refuses the block; a block
  /// without the key is read. When the image is not taken the entry is left as it was and 0
  /// returned. A text field stored without a NUL loses its last byte to one, so every field
  /// stays a terminated text. Returns 1 on success.
  int UnpackData(const char* prefix, const CUnpackageBlk& blk);

  /// Writes the image into `out`, which must hold 4084 bytes.
  void _PackImage(uint8_t* out) const;
  /// Replaces the fields from an image of `size` bytes; false (nothing changed) unless `size`
  /// is 4084.
  bool _UnpackImage(const uint8_t* image, size_t size);

  int32_t m_nType;             ///< kind of entry; 0 is an empty entry
  int32_t m_nStatus;           ///< 0 after Empty
  int32_t m_nInterval;         ///< repeat interval; 1 after Empty
  ME_CAL_DATE m_calStart;      ///< start
  ME_CAL_DATE m_calEnd;        ///< end
  ME_CAL_DATE m_calAlarm;      ///< alarm time
  ME_CAL_DATE m_calModified;   ///< last change
  int32_t m_nRepeat;           ///< repeat rule; 0 (none) after Empty
  int32_t m_nRepeatMask;       ///< repeat days; 0 after Empty
  int32_t m_nRepeatCount;      ///< 0x7FFFFFFF (no limit) after Empty
  ME_CAL_DATE m_calRepeatEnd;  ///< last repetition
  int32_t m_nAlarmType;        ///< 0 after Empty
  uint32_t m_hHandle;          ///< the phone's handle
  int32_t m_nPriority;         ///< 0 after Empty
  int32_t m_nCategory;         ///< 0 after Empty
  int32_t m_nFlags;            ///< 0 after Empty
  uint32_t m_nIndex;           ///< position on the phone
  char m_szSubject[512];
  char m_szLocation[512];
  char m_szDescription[512];
  char m_szAttendees[512];
  char m_szContact[513];
  char m_szPhone[513];
  char m_szExtra[513];
  char m_szCategory[65];
  char m_szAlarmFile[260];  ///< a file path
  int32_t m_nAlarmSound;    ///< 0 after Empty
};
