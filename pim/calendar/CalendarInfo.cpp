#include "handset/pim/CalendarInfo.h"

#include <cstring>
#include <string>

#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

namespace {

std::string Key(const char* prefix, const char* name) {
  return std::string(prefix ? prefix : "") + name;
}

void PutDate(hs::ByteWriter& w, const ME_CAL_DATE& d) {
  w.i32le(d.nYear);
  w.i32le(d.nMonth);
  w.i32le(d.nDay);
  w.i32le(d.nHour);
  w.i32le(d.nMinute);
  w.i32le(d.nSecond);
}

ME_CAL_DATE GetDate(hs::ByteReader& r) {
  ME_CAL_DATE d;
  d.nYear = r.i32le();
  d.nMonth = r.i32le();
  d.nDay = r.i32le();
  d.nHour = r.i32le();
  d.nMinute = r.i32le();
  d.nSecond = r.i32le();
  return d;
}

// Text fields keep every byte, so an image survives unpack and pack unchanged; only a field
// without any NUL gets one in its last byte.
template <size_t N>
void GetText(hs::ByteReader& r, char (&field)[N]) {
  if (!r.read(field, N)) return;
  if (!std::memchr(field, 0, N)) field[N - 1] = '\0';
}

template <size_t N>
void PutText(hs::ByteWriter& w, const char (&field)[N]) {
  w.bytes(field, N);
}

}  // namespace

CCalendarInfo::CCalendarInfo() {
  // Zero every text byte once so that images of fresh entries are fully defined.
  std::memset(m_szSubject, 0, sizeof m_szSubject);
  std::memset(m_szLocation, 0, sizeof m_szLocation);
  std::memset(m_szDescription, 0, sizeof m_szDescription);
  std::memset(m_szAttendees, 0, sizeof m_szAttendees);
  std::memset(m_szContact, 0, sizeof m_szContact);
  std::memset(m_szPhone, 0, sizeof m_szPhone);
  std::memset(m_szExtra, 0, sizeof m_szExtra);
  std::memset(m_szCategory, 0, sizeof m_szCategory);
  std::memset(m_szAlarmFile, 0, sizeof m_szAlarmFile);
  m_hHandle = 0;
  m_nIndex = 0;
  Empty();
}

void CCalendarInfo::Empty() {
  m_nType = 0;
  m_nStatus = 0;
  m_nInterval = 1;
  m_calStart.Reset();
  m_calEnd.Reset();
  m_calAlarm.Reset();
  m_calModified.Reset();
  m_nRepeat = 0;
  m_nRepeatMask = 0;
  m_nRepeatCount = 0x7FFFFFFF;
  m_calRepeatEnd.Reset();
  m_nAlarmType = 0;
  m_nPriority = 0;
  m_nCategory = 0;
  m_nFlags = 0;
  m_szSubject[0] = m_szLocation[0] = m_szDescription[0] = m_szAttendees[0] = '\0';
  m_szContact[0] = m_szPhone[0] = m_szExtra[0] = m_szCategory[0] = m_szAlarmFile[0] = '\0';
  m_nAlarmSound = 0;
}

CString CCalendarInfo::Dump() const {
  CString out;
  auto date = [](const ME_CAL_DATE& d) {
    CString s;
    s.Format("%04d-%02d-%02d %02d:%02d:%02d", d.nYear, d.nMonth, d.nDay, d.nHour, d.nMinute,
             d.nSecond);
    return s;
  };
  out.Format(
      "calendar type %d status %d handle 0x%X index %u\n  start %s end %s alarm %s\n"
      "  repeat %d every %d mask 0x%X count %d until %s\n  subject \"%.511s\" location "
      "\"%.511s\"\n",
      m_nType, m_nStatus, m_hHandle, m_nIndex, date(m_calStart).c_str(), date(m_calEnd).c_str(),
      date(m_calAlarm).c_str(), m_nRepeat, m_nInterval, m_nRepeatMask, m_nRepeatCount,
      date(m_calRepeatEnd).c_str(), m_szSubject, m_szLocation);
  return out;
}

void CCalendarInfo::_PackImage(uint8_t* out) const {
  hs::ByteWriter w(CALINFO_IMAGE_SIZE);
  w.reserve(CALINFO_IMAGE_SIZE);
  w.i32le(m_nType);
  w.i32le(m_nStatus);
  w.i32le(m_nInterval);
  PutDate(w, m_calStart);
  PutDate(w, m_calEnd);
  PutDate(w, m_calAlarm);
  PutDate(w, m_calModified);
  w.i32le(m_nRepeat);
  w.i32le(m_nRepeatMask);
  w.i32le(m_nRepeatCount);
  PutDate(w, m_calRepeatEnd);
  w.i32le(m_nAlarmType);
  w.u32le(m_hHandle);
  w.i32le(m_nPriority);
  w.i32le(m_nCategory);
  w.i32le(m_nFlags);
  w.u32le(m_nIndex);
  PutText(w, m_szSubject);
  PutText(w, m_szLocation);
  PutText(w, m_szDescription);
  PutText(w, m_szAttendees);
  PutText(w, m_szContact);
  PutText(w, m_szPhone);
  PutText(w, m_szExtra);
  PutText(w, m_szCategory);
  PutText(w, m_szAlarmFile);
  w.i32le(m_nAlarmSound);
  std::memcpy(out, w.data(), w.size());
}

bool CCalendarInfo::_UnpackImage(const uint8_t* image, size_t size) {
  if (!image || size != CALINFO_IMAGE_SIZE) return false;
  hs::ByteReader r(image, size);
  CCalendarInfo in;
  in.m_nType = r.i32le();
  in.m_nStatus = r.i32le();
  in.m_nInterval = r.i32le();
  in.m_calStart = GetDate(r);
  in.m_calEnd = GetDate(r);
  in.m_calAlarm = GetDate(r);
  in.m_calModified = GetDate(r);
  in.m_nRepeat = r.i32le();
  in.m_nRepeatMask = r.i32le();
  in.m_nRepeatCount = r.i32le();
  in.m_calRepeatEnd = GetDate(r);
  in.m_nAlarmType = r.i32le();
  in.m_hHandle = r.u32le();
  in.m_nPriority = r.i32le();
  in.m_nCategory = r.i32le();
  in.m_nFlags = r.i32le();
  in.m_nIndex = r.u32le();
  GetText(r, in.m_szSubject);
  GetText(r, in.m_szLocation);
  GetText(r, in.m_szDescription);
  GetText(r, in.m_szAttendees);
  GetText(r, in.m_szContact);
  GetText(r, in.m_szPhone);
  GetText(r, in.m_szExtra);
  GetText(r, in.m_szCategory);
  GetText(r, in.m_szAlarmFile);
  in.m_nAlarmSound = r.i32le();
  if (!r.ok() || !r.atEnd()) return false;
  *this = in;
  return true;
}

int CCalendarInfo::PackData(const char* prefix, CPackageBlk& blk) const {
  uint8_t version[2] = {uint8_t(CALINFO_VERSION & 0xFF), uint8_t(CALINFO_VERSION >> 8)};
  blk.Add(Key(prefix, ".CALINFO_VERSION").c_str(), version, 2);
  uint8_t image[CALINFO_IMAGE_SIZE];
  _PackImage(image);
  blk.Add(Key(prefix, ".this").c_str(), image, CALINFO_IMAGE_SIZE);
  return 1;
}

int CCalendarInfo::UnpackData(const char* prefix, const CUnpackageBlk& blk) {
  const void* data = nullptr;
  uint32_t size = 0;
  // Only a version that is there and differs is refused; blocks without one are taken.
  if (blk.GetData(Key(prefix, ".CALINFO_VERSION").c_str(), &data, &size)) {
    hs::ByteReader version(data, size);
    if (size != 2 || version.u16le() != CALINFO_VERSION) return 0;
  }
  if (!blk.GetData(Key(prefix, ".this").c_str(), &data, &size)) return 0;
  return _UnpackImage(static_cast<const uint8_t*>(data), size) ? 1 : 0;
}
