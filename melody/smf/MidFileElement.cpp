#include "handset/melody/MidFileElement.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "handset/platform/Results.h"
#include "platform/ByteReader.h"
#include "platform/ByteWriter.h"

namespace mf = hs::midifile;

namespace {

const char kTagLed[] = "*-<QV_MMF_LED>-*";
const char kTagVib[] = "*-<QV_MMF_VIB>-*";
const char kTagWave[] = "*-<QV_MMF_WAVE>-*";
const size_t kTagLedLen = sizeof(kTagLed) - 1;
const size_t kTagVibLen = sizeof(kTagVib) - 1;
const size_t kTagWaveLen = sizeof(kTagWave) - 1;
const size_t kMinFileSize = 15;

// A variable-length quantity of any length (the value keeps its low 32 bits). False when the data
// ends inside it.
bool ReadVarLen(hs::ByteReader& r, uint32_t* value) {
  uint32_t v = 0;
  for (;;) {
    uint8_t b = r.u8();
    if (!r.ok()) return false;
    v = (v << 7) | (b & 0x7Fu);
    if (b < 0x80) break;
  }
  *value = v;
  return true;
}

void CopyText(char* field, size_t fieldSize, const uint8_t* text, size_t length) {
  size_t n = std::min(length, fieldSize - 1);
  std::memset(field, 0, fieldSize);
  if (n) std::memcpy(field, text, n);
  // An embedded NUL ends the kept text.
}

int TwoDigits(const uint8_t* p) {
  if (p[0] < '0' || p[0] > '9' || p[1] < '0' || p[1] > '9') return -1;
  return (p[0] - '0') * 10 + (p[1] - '0');
}

struct ChannelEvent {
  NoteEventInfo e;
  uint8_t channel;
};

class MidiOut {
 public:
  explicit MidiOut(hs::ByteWriter& w) : w_(w) {}
  void Meta(uint8_t type, const void* data, size_t length, bool varLength) {
    w_.u8(0);
    w_.u8(0xFF);
    w_.u8(type);
    if (varLength)
      w_.vlq(static_cast<uint32_t>(length));
    else
      w_.u8(static_cast<uint8_t>(length));
    w_.bytes(data, length);
  }
  void ShortText(uint8_t type, const char* text) {
    size_t n = std::strlen(text);
    if (n == 0) return;
    Meta(type, text, std::min<size_t>(n, 255), false);
  }
  void Channel(uint8_t status, uint8_t a, uint8_t b) {
    w_.u8(0);
    w_.u8(status);
    w_.u8(a);
    w_.u8(b);
  }
  void EndOfTrack(size_t lengthAt) {
    const uint8_t eot[4] = {0x00, 0xFF, 0x2F, 0x00};
    w_.bytes(eot, 4);
    w_.closeLength32be(lengthAt);
  }
  size_t BeginTrack() {
    w_.fourcc("MTrk");
    return w_.placeholder32();
  }
  // Note events are gathered in a small staging block and handed to the writer in pieces, which
  // keeps the per-event cost low; Flush must follow the last one.
  void Note(uint32_t delta, const NoteEventInfo& e, uint8_t channel) {
    if (staged_ + 8 > sizeof(stage_)) Flush();
    uint8_t* b = stage_ + staged_;
    size_t n = 0;
    if (delta > 0x0FFFFFFFu) delta = 0x0FFFFFFFu;
    for (int shift = 21; shift > 0; shift -= 7)
      if (delta >> shift) b[n++] = static_cast<uint8_t>(((delta >> shift) & 0x7F) | 0x80);
    b[n++] = static_cast<uint8_t>(delta & 0x7F);
    b[n++] = static_cast<uint8_t>((e.nEventType == NOTE_EVENT_ON ? 0x90 : 0x80) | (channel & 0x0F));
    b[n++] = e.byNoteValue & 0x7F;
    b[n++] = std::min<uint8_t>(e.byVelocity, 127);
    staged_ += n;
  }
  void Flush() {
    if (staged_) w_.bytes(stage_, staged_);
    staged_ = 0;
  }

 private:
  hs::ByteWriter& w_;
  uint8_t stage_[4096];
  size_t staged_ = 0;
};

}  // namespace

CMidFileElement::CMidFileElement() {
  _ResetMembers();
}

CMidFileElement::~CMidFileElement() {
  CMidTrackElement* t = m_pTrackHead;
  while (t) {
    CMidTrackElement* next = t->GetNextElement();
    delete t;
    t = next;
  }
}

void CMidFileElement::_ResetMembers() {
  m_rawBuffer.clear();
  m_rawBuffer.shrink_to_fit();
  m_loadedData.clear();
  m_pTrackHead = m_pCurTrack = nullptr;
  m_nTrackNum = 0;
  m_nMidiFormat = 0;
  m_nDeclaredTrackNum = 0;
  m_nDivision = 120;
  m_nTempo = 120;
  const uint8_t ts[4] = {4, 2, 24, 8};
  std::memcpy(m_byTimeSignature, ts, 4);
  m_szCopyright[0] = m_szSongTitle[0] = 0;
  m_szPendingTrackName[0] = m_szPendingInstrumentName[0] = 0;
  m_szFileName[0] = 0;
  m_bFromFile = 0;
  m_bMIPExist = 0;
  m_byDeviceID = 0xFF;
  std::memset(m_byMIPChannel, 0xFF, sizeof(m_byMIPChannel));
  std::memset(m_byMIPValue, 0xFF, sizeof(m_byMIPValue));
  m_nMIPCount = 0;
  m_nPolyphonyLimit = 16;
  m_bPendingWave = 0;
  m_pendingWaveList.clear();
  m_byWaveType[0] = 4;
  m_byWaveType[1] = 0;
  m_MMFInfo.InitMIDISupport(2);
  m_bLoaded = m_bInformationLost = m_bModified = m_bNoteOffByZeroVelocity = 0;
  m_nEventMode = MIDEVENT_MODE_ALL;
  m_nSelectStart = m_nSelectStop = 0;
  m_outBuffer.clear();
  m_nLastResult = 0;
  m_tempoList.clear();
  m_bTempoSeen = 0;
  m_nCurTempo = 0;
  m_nTicksSinceTempo = 0;
  for (int i = 0; i < 16; ++i) {
    m_nChannelProgram[i] = m_nChannelBankMSB[i] = m_nChannelBankLSB[i] = -1;
    m_pChannelTrack[i] = nullptr;
  }
}

void CMidFileElement::ReleaseMidFile() {
  CMidTrackElement* t = m_pTrackHead;
  while (t) {
    CMidTrackElement* next = t->GetNextElement();
    delete t;
    t = next;
  }
  m_pTrackHead = nullptr;
  _ResetMembers();
}

int CMidFileElement::LoadMidiFile(const char* path) {
  if (m_bLoading) return mf::kErrBusy;
  if (m_bLoaded || m_pTrackHead) ReleaseMidFile();
  if (!path) return mf::kErrOpen;
  std::FILE* f = std::fopen(path, "rb");
  if (!f) return mf::kErrOpen;
  m_bLoading = 1;
  long size = -1;
  if (std::fseek(f, 0, SEEK_END) == 0) size = std::ftell(f);
  if (size < 0 || std::fseek(f, 0, SEEK_SET) != 0) {
    std::fclose(f);
    m_bLoading = 0;
    return mf::kErrShortRead;
  }
  if (static_cast<size_t>(size) < kMinFileSize) {
    std::fclose(f);
    m_bLoading = 0;
    return mf::kErrTooShort;
  }
  try {
    m_rawBuffer.resize(static_cast<size_t>(size));
  } catch (...) {
    std::fclose(f);
    m_bLoading = 0;
    m_rawBuffer.clear();
    return mf::kErrNoMemory;
  }
  size_t got = std::fread(m_rawBuffer.data(), 1, m_rawBuffer.size(), f);
  std::fclose(f);
  if (got != m_rawBuffer.size()) {
    m_bLoading = 0;
    m_rawBuffer.clear();
    return mf::kErrShortRead;
  }
  std::snprintf(m_szFileName, sizeof(m_szFileName), "%s", path);
  int rc = _LoadBuffer(m_rawBuffer.data(), m_rawBuffer.size());
  if (rc == mf::kOk) m_bFromFile = 1;
  return rc;
}

int CMidFileElement::LoadFromMemory(const unsigned char* data, unsigned long length) {
  if (m_bLoading) return mf::kErrBusy;
  if (m_bLoaded || m_pTrackHead) ReleaseMidFile();
  if (!data || length == 0) return mf::kErrNoData;
  if (length < kMinFileSize) return mf::kErrTooShort;
  // Parsed in place; the bytes are copied only once the load succeeded.
  m_bLoading = 1;
  std::snprintf(m_szFileName, sizeof(m_szFileName), "%s", "Melody");
  return _LoadBuffer(data, length);
}

// Header, track chunks and the after-load fixes. Any failure leaves the object empty.
int CMidFileElement::_LoadBuffer(const uint8_t* data, size_t size) {
  hs::ByteReader r(data, size);
  int rc = mf::kOk;
  if (!r.expect("MThd\0\0\0\x06", 8)) {
    rc = mf::kErrNotMThd;
  } else {
    m_nMidiFormat = r.u16be();
    m_nDeclaredTrackNum = r.u16be();
    m_nDivision = r.u16be();
    if (m_nDeclaredTrackNum == 0 || (m_nMidiFormat == 0 && m_nDeclaredTrackNum > 1))
      rc = mf::kErrTrackCount;
    else if (m_nMidiFormat > 1)
      rc = mf::kErrFormat;
  }
  // The chunk frames are checked before any events are parsed: a damaged file fails with the
  // same code, without building tracks that would be thrown away.
  std::vector<std::pair<const uint8_t*, uint32_t>> bodies;
  while (rc == mf::kOk && !r.atEnd() && bodies.size() < m_nDeclaredTrackNum) {
    if (!r.expect("MTrk", 4)) {
      rc = mf::kErrNotMTrk;
      break;
    }
    uint32_t length = r.u32be();
    if (!r.ok() || length > r.remaining()) {
      rc = mf::kErrTrackOverrun;
      break;
    }
    bodies.emplace_back(r.bytes(length), length);
  }
  int chunks = 0;
  for (; rc == mf::kOk && chunks < static_cast<int>(bodies.size()); ++chunks)
    rc = _ParseMidiTrack(bodies[chunks].first, bodies[chunks].second, chunks);
  if (rc != mf::kOk) {
    m_bLoading = 0;
    ReleaseMidFile();
    return rc;
  }
  if (chunks < m_nDeclaredTrackNum) m_nDeclaredTrackNum = static_cast<uint16_t>(chunks);
  _ReduceTempo();
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement()) t->FixNonStopNote();
  if (m_nTrackNum > 1 && m_bMIPExist) _ApplyMIP2TrackOrder();
  if (data == m_rawBuffer.data())
    m_loadedData.swap(m_rawBuffer);
  else
    m_loadedData.assign(data, data + size);
  m_rawBuffer.clear();
  m_rawBuffer.shrink_to_fit();
  m_tempoList.clear();
  m_bLoading = 0;
  m_bLoaded = 1;
  return mf::kOk;
}

int CMidFileElement::_ParseMidiTrack(const uint8_t* data, size_t size, int chunkIndex) {
  hs::ByteReader r(data, size);
  m_pCurTrack = nullptr;
  m_szPendingTrackName[0] = 0;
  m_szPendingInstrumentName[0] = 0;
  m_bPendingWave = 0;
  m_pendingWaveList.clear();
  uint32_t tick = 0;
  uint32_t lastNoteTick = 0;
  uint8_t status = 0;
  while (!r.atEnd()) {
    uint32_t delta = 0;
    if (!ReadVarLen(r, &delta)) break;
    tick += delta;
    m_nTicksSinceTempo += delta;
    if (r.atEnd()) break;
    // Running status applies to every status, system and meta bytes included.
    if (r.peek8() >= 0x80) status = r.u8();
    if (status == 0xFF) {
      uint8_t type = r.peek8();
      if (type == 0x2F) {
        r.skip(std::min<size_t>(2, r.remaining()));
        break;
      }
      _ReadMetaEvent(r, chunkIndex);
      continue;
    }
    if (status == 0xF0 || status == 0xF7) {
      uint32_t length = 0;
      if (!ReadVarLen(r, &length)) break;
      size_t take = std::min<size_t>(length, r.remaining());
      const uint8_t* body = r.bytes(take);
      if (status == 0xF0) _ReadSysEx(body, take);
      continue;
    }
    if (status > 0xF0) {
      size_t skip = status == 0xF2 ? 2 : 1;
      r.skip(std::min(skip, r.remaining()));
      m_bInformationLost = 1;
      continue;
    }
    const uint8_t channel = status & 0x0F;
    switch (status & 0xF0) {
      case 0x80:
      case 0x90: {
        uint8_t key = r.u8();
        uint8_t velocity = r.u8();
        if (!r.ok()) return mf::kOk;
        bool on = (status & 0xF0) == 0x90 && velocity != 0;
        if ((status & 0xF0) == 0x90 && velocity == 0) m_bNoteOffByZeroVelocity = 1;
        CMidTrackElement* t = _GetChannelTrack(channel);
        if (!t) return mf::kErrNoteNoTrack;
        // Format 0 gives the track the ticks since its own last note event; format 1 the ticks
        // since this chunk's previous note event, so a chunk that mixes channels or a channel
        // that spans chunks advances each track by the chunk's note-to-note gaps.
        const uint32_t delta = m_nMidiFormat == 1 ? tick - lastNoteTick
                                                  : tick - std::min(tick, t->GetNowNoteEventTime());
        lastNoteTick = tick;
        if (t->AppendNoteEvent(on ? 1 : 0, key, velocity, delta) != 0) return mf::kErrNoteNoTrack;
        break;
      }
      case 0xB0: {
        uint8_t controller = r.u8();
        uint8_t value = r.u8();
        if (!r.ok()) return mf::kOk;
        if (controller == 0 || controller == 32) {
          int* store = controller == 0 ? m_nChannelBankMSB : m_nChannelBankLSB;
          store[channel] = value;
          CMidTrackElement* t =
              m_pTrackHead ? m_pTrackHead->SearchTrackByChannelNum(channel) : nullptr;
          if (t && controller == 0) t->SetBankSelectMSB(value);
          if (t && controller == 32) t->SetBankSelectLSB(value);
        } else {
          m_bInformationLost = 1;
        }
        break;
      }
      case 0xC0: {
        uint8_t program = r.u8();
        if (!r.ok()) return mf::kOk;
        _SetChannelProgram(channel, program);
        break;
      }
      case 0xA0:
      case 0xE0:
        r.skip(std::min<size_t>(2, r.remaining()));
        m_bInformationLost = 1;
        break;
      case 0xD0:
        r.skip(std::min<size_t>(1, r.remaining()));
        m_bInformationLost = 1;
        break;
      default:
        // A data byte before any status: nothing to apply it to.
        m_bInformationLost = 1;
        break;
    }
  }
  return mf::kOk;
}

void CMidFileElement::_ReadMetaEvent(hs::ByteReader& r, int chunkIndex) {
  const uint8_t type = r.u8();
  if (type == 0x0A || type == 0x0B) {
    // Only the type and one more byte are consumed; the rest is read as events.
    r.skip(std::min<size_t>(1, r.remaining()));
    return;
  }
  uint32_t declared = 0;
  if (!ReadVarLen(r, &declared)) return;
  const size_t length = std::min<size_t>(declared, r.remaining());
  const uint8_t* body = r.bytes(length);
  switch (type) {
    case 0x01:
      _ReadSMAFTag(body, length);
      break;
    case 0x02:
      CopyText(m_szCopyright, sizeof(m_szCopyright), body, length);
      break;
    case 0x03:
      if (m_nMidiFormat == 0 || chunkIndex == 0) {
        CopyText(m_szSongTitle, sizeof(m_szSongTitle), body, length);
        CopyText(m_szPendingTrackName, sizeof(m_szPendingTrackName), body, length);
      } else if (m_pCurTrack) {
        m_pCurTrack->SetTrackName(reinterpret_cast<const char*>(body), static_cast<int>(length));
      } else {
        CopyText(m_szPendingTrackName, sizeof(m_szPendingTrackName), body, length);
      }
      break;
    case 0x04:
      if (m_pCurTrack)
        m_pCurTrack->SetInstrumentName(reinterpret_cast<const char*>(body),
                                       static_cast<int>(length));
      else
        CopyText(m_szPendingInstrumentName, sizeof(m_szPendingInstrumentName), body, length);
      break;
    case 0x20:
      break;
    case 0x51:
      if (length >= 3)
        _AccountTempo((uint32_t{body[0]} << 16) | (uint32_t{body[1]} << 8) | body[2]);
      break;
    case 0x58:
      std::memcpy(m_byTimeSignature, body, std::min<size_t>(length, 4));
      break;
    default:
      m_bInformationLost = 1;
      break;
  }
}

void CMidFileElement::_ReadSysEx(const uint8_t* data, size_t length) {
  // SP-MIDI maximum instantaneous polyphony: 7F <device> 0B 01 (channel, MIP)... F7.
  if (length < 4 || data[2] != 0x0B || data[3] != 0x01) return;
  m_byDeviceID = data[1];
  m_nMIPCount = 0;
  for (size_t i = 4; i + 1 < length && m_nMIPCount < kMaxMipPairs; i += 2) {
    if (data[i] == 0xF7 || data[i + 1] == 0xF7) break;
    m_byMIPChannel[m_nMIPCount] = data[i];
    m_byMIPValue[m_nMIPCount] = data[i + 1];
    ++m_nMIPCount;
  }
  m_bMIPExist = 1;
}

void CMidFileElement::_ReadSMAFTag(const uint8_t* text, size_t length) {
  if (length == kTagLedLen + 2) {
    int n = TwoDigits(text + kTagLedLen);
    if (n < 0) return;
    if (std::memcmp(text, kTagLed, kTagLedLen) == 0)
      m_MMFInfo.SetMA2LedStatus(n);
    else if (std::memcmp(text, kTagVib, kTagVibLen) == 0)
      m_MMFInfo.SetVibStatus(n, 1);
    return;
  }
  if (length < 20 || std::memcmp(text, kTagWave, kTagWaveLen) != 0) return;
  int track = TwoDigits(text + kTagWaveLen);
  size_t at = kTagWaveLen + 2;
  if (at < length) m_byWaveType[0] = text[at];
  if (at + 1 < length) m_byWaveType[1] = text[at + 1];
  const char* list = reinterpret_cast<const char*>(text + kTagWaveLen + 4);
  int listLength = length > kTagWaveLen + 4 ? static_cast<int>(length - kTagWaveLen - 4) : 0;
  CMidTrackElement* t = track >= 0 ? GetTrackByIndex(track) : nullptr;
  if (t) {
    t->SetMMFWaveTrack(1);
    if (listLength > 0) t->SetMMFWavFileLst(list, listLength);
  } else {
    m_bPendingWave = 1;
    m_pendingWaveList.assign(list, list + listLength);
  }
}

void CMidFileElement::_AccountTempo(uint32_t microseconds) {
  if (microseconds == 0) return;
  if (!m_bTempoSeen) {
    m_bTempoSeen = 1;
    m_tempoList.push_back({microseconds, 0});
    m_nCurTempo = microseconds;
    m_nTicksSinceTempo = 0;
    return;
  }
  auto it = std::find_if(m_tempoList.begin(), m_tempoList.end(),
                         [&](const TempoEntry& e) { return e.microseconds == m_nCurTempo; });
  if (it != m_tempoList.end())
    it->ticks += m_nTicksSinceTempo;
  else
    m_tempoList.push_back({microseconds, 0});
  m_nCurTempo = microseconds;
  m_nTicksSinceTempo = 0;
}

void CMidFileElement::_ReduceTempo() {
  if (m_tempoList.empty()) return;
  const TempoEntry* best = &m_tempoList[0];
  for (const TempoEntry& e : m_tempoList)
    if (e.ticks > best->ticks) best = &e;
  double bpm = 60000000.0 / best->microseconds;
  m_nTempo = static_cast<uint16_t>(std::min(bpm, 65535.0));
  if (m_nTempo == 0) m_nTempo = 1;
}

CMidTrackElement* CMidFileElement::_CreateTrack(uint8_t channel, int index) {
  if (m_nTrackNum >= kMaxTracks) return nullptr;
  CMidTrackElement* t = new CMidTrackElement;
  t->SetChannelNum(channel);
  t->SetDivision(m_nDivision);
  t->SetGetMidiEventMode(m_nEventMode == MIDEVENT_MODE_KEEP ? MIDEVENT_MODE_ALL : m_nEventMode);
  t->SetTrackName(m_szPendingTrackName);
  t->SetInstrumentName(m_szPendingInstrumentName);
  m_szPendingTrackName[0] = m_szPendingInstrumentName[0] = 0;
  if (channel < 16) {
    if (m_nChannelProgram[channel] >= 0) t->SetProgram(m_nChannelProgram[channel]);
    if (m_nChannelBankMSB[channel] >= 0)
      t->SetBankSelectMSB(static_cast<uint8_t>(m_nChannelBankMSB[channel]));
    if (m_nChannelBankLSB[channel] >= 0)
      t->SetBankSelectLSB(static_cast<uint8_t>(m_nChannelBankLSB[channel]));
  }
  if (m_bPendingWave) {
    t->SetMMFWaveTrack(1);
    if (!m_pendingWaveList.empty())
      t->SetMMFWavFileLst(m_pendingWaveList.data(), static_cast<int>(m_pendingWaveList.size()));
    m_bPendingWave = 0;
    m_pendingWaveList.clear();
  }
  if (!m_pTrackHead) {
    m_pTrackHead = t;
  } else if (index < 0) {
    m_pTrackHead->AppendNewTrack(t);
  } else {
    m_pTrackHead->InsertNewTrack(index, t);
    if (index == 0) m_pTrackHead = t;
  }
  ++m_nTrackNum;
  return t;
}

// The track of `channel`: the current one, else one found in the chain, else a new one.
CMidTrackElement* CMidFileElement::_GetChannelTrack(uint8_t channel) {
  if (m_pCurTrack && m_pCurTrack->GetChannelNum() == channel) return m_pCurTrack;
  // Tracks are neither deleted nor re-channelled while loading, so the lookup can be kept.
  CMidTrackElement* t = m_pChannelTrack[channel & 0x0F];
  if (!t && m_pTrackHead) t = m_pTrackHead->SearchTrackByChannelNum(channel);
  if (!t) t = _CreateTrack(channel, -1);
  if (t) m_pCurTrack = m_pChannelTrack[channel & 0x0F] = t;
  return t;
}

// Programs arrive before the channel's first note, so they are held per channel and given to the
// channel's track when it exists or is created.
void CMidFileElement::_SetChannelProgram(uint8_t channel, int program) {
  m_nChannelProgram[channel & 0x0F] = program;
  CMidTrackElement* t = m_pTrackHead ? m_pTrackHead->SearchTrackByChannelNum(channel) : nullptr;
  if (t) t->SetProgram(program);
}

int CMidFileElement::_PickFreeChannelNum() const {
  for (int ch = 0; ch < 16; ++ch) {
    bool used = m_pTrackHead && m_pTrackHead->SearchTrackByChannelNum(static_cast<uint8_t>(ch));
    if (!used) return ch;
  }
  return -1;
}

int CMidFileElement::_ApplyMIP2TrackOrder() {
  if (!m_bMIPExist) return mf::kErrNoMip;
  int pos = 0;
  for (int i = 0; i < m_nMIPCount; ++i) {
    CMidTrackElement* t =
        m_pTrackHead ? m_pTrackHead->SearchTrackByChannelNum(m_byMIPChannel[i]) : nullptr;
    if (!t) continue;
    MoveTrackByIndex(t->GetTrackIndex(), pos);
    ++pos;
  }
  return mf::kOk;
}

void CMidFileElement::_UnlinkTrack(CMidTrackElement* t) {
  if (t == m_pTrackHead) m_pTrackHead = t->GetNextElement();
  if (t == m_pCurTrack) m_pCurTrack = nullptr;
  if (t->GetPrevElement()) t->GetPrevElement()->SetNextElement(t->GetNextElement());
  if (t->GetNextElement()) t->GetNextElement()->SetPrevElement(t->GetPrevElement());
  t->SetNextElement(nullptr);
  t->SetPrevElement(nullptr);
  --m_nTrackNum;
}

int CMidFileElement::SetMidiFormat(int format) {
  if (format != 0 && format != 1) return mf::kErrFormat;
  m_nMidiFormat = static_cast<uint16_t>(format);
  return mf::kOk;
}

int CMidFileElement::SetTempo(int bpm) {
  if (bpm < 1 || bpm > 65535) return -1;
  m_nTempo = static_cast<uint16_t>(bpm);
  m_bModified = 1;
  return mf::kOk;
}

double CMidFileElement::GetTempoAdjustRate() const {
  return m_nTempo / 120.0;
}

uint32_t CMidFileElement::GetMaxTrackWidthCount() const {
  uint32_t width = 0;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
    width = std::max(width, t->GetWidthCount());
  return width;
}

double CMidFileElement::GetMaxPlayTime() const {
  double ticks = GetMaxTrackWidthCount();
  if (m_nDivision & 0x8000) {
    // SMPTE division: frames per second (negative high byte) times ticks per frame.
    int fps = 256 - (m_nDivision >> 8);
    int perFrame = m_nDivision & 0xFF;
    return fps && perFrame ? ticks / (fps * perFrame) : 0.0;
  }
  if (m_nDivision == 0 || m_nTempo == 0) return 0.0;
  return ticks / m_nDivision * 60.0 / m_nTempo;
}

void CMidFileElement::SetTimeSignature(const uint8_t bytes[4]) {
  if (!bytes) return;
  std::memcpy(m_byTimeSignature, bytes, 4);
  m_bModified = 1;
}

int CMidFileElement::IsEmpty() const {
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
    if (!t->IsEmpty()) return 0;
  return 1;
}

int CMidFileElement::DoSimplied() {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  CMidTrackElement* t = m_pTrackHead;
  while (t) {
    CMidTrackElement* next = t->GetNextElement();
    t->DoSimplied();
    if (t->IsEmpty()) {
      _UnlinkTrack(t);
      delete t;
      m_bModified = 1;
    }
    t = next;
  }
  return mf::kOk;
}

int CMidFileElement::IsModified() const {
  if (m_bModified) return 1;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
    if (t->IsModified()) return 1;
  return 0;
}

void CMidFileElement::SetModified(int modified) {
  m_bModified = modified;
  if (!modified)
    for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement()) t->SetModified(0);
}

CMidTrackElement* CMidFileElement::AddTrack(int index, int channel) {
  if (channel == 0xFF) channel = _PickFreeChannelNum();
  if (channel < 0 || channel > 15) return nullptr;
  if (m_pTrackHead && m_pTrackHead->SearchTrackByChannelNum(static_cast<uint8_t>(channel)))
    return nullptr;
  CMidTrackElement* t = _CreateTrack(static_cast<uint8_t>(channel), index);
  if (!t) return nullptr;
  m_bLoaded = 1;
  m_bModified = 1;
  return t;
}

int CMidFileElement::DelTrack(int index) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  CMidTrackElement* t = GetTrackByIndex(index);
  if (!t) return mf::kErrTrackIndex;
  _UnlinkTrack(t);
  delete t;
  m_bModified = 1;
  return mf::kOk;
}

int CMidFileElement::DuplicateTrack(int index) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  CMidTrackElement* t = GetTrackByIndex(index);
  if (!t) return mf::kErrTrackIndex;
  int channel = _PickFreeChannelNum();
  if (channel < 0) return mf::kErrTrackInsert;
  CMidTrackElement* copy = t->Duplicate();
  copy->SetChannelNum(static_cast<uint8_t>(channel));
  m_pTrackHead->InsertNewTrack(index + 1, copy);
  ++m_nTrackNum;
  m_bModified = 1;
  return mf::kOk;
}

int CMidFileElement::SwitchTrackByIndex(int index) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  CMidTrackElement* a = GetTrackByIndex(index);
  CMidTrackElement* b = a ? a->GetNextElement() : nullptr;
  if (!b) return mf::kErrTrackIndex;
  CMidTrackElement* before = a->GetPrevElement();
  CMidTrackElement* after = b->GetNextElement();
  if (before) before->SetNextElement(b);
  b->SetPrevElement(before);
  b->SetNextElement(a);
  a->SetPrevElement(b);
  a->SetNextElement(after);
  if (after) after->SetPrevElement(a);
  if (m_pTrackHead == a) m_pTrackHead = b;
  m_bModified = 1;
  return mf::kOk;
}

int CMidFileElement::MoveTrackByIndex(int from, int to) {
  if (!m_bLoaded && !m_bLoading) return mf::kErrNotLoaded;
  const int count = static_cast<int>(m_nTrackNum);
  if (from < 0 || to < 0 || from >= count || to >= count) return mf::kErrTrackIndex;
  int loaded = m_bLoaded;
  m_bLoaded = 1;  // the swaps check the flag; moving during a load is allowed
  for (int i = from; i < to; ++i) SwitchTrackByIndex(i);
  for (int i = from; i > to; --i) SwitchTrackByIndex(i - 1);
  m_bLoaded = loaded;
  return mf::kOk;
}

CMidTrackElement* CMidFileElement::GetTrackByIndex(int index) const {
  if (index < 0) return nullptr;
  CMidTrackElement* t = m_pTrackHead;
  for (int i = 0; t && i < index; ++i) t = t->GetNextElement();
  return t;
}

int CMidFileElement::GetEnabledTrackNum() const {
  int n = 0;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
    if (t->IsEnabled()) ++n;
  return n;
}

int CMidFileElement::GetWaveTrackIndex() const {
  int i = 0;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement(), ++i)
    if (t->IsMMFWaveTrack()) return i;
  return -1;
}

int CMidFileElement::SetWaveTrackIndex(int index) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  if (index != -1 && !GetTrackByIndex(index)) return mf::kErrTrackIndex;
  int i = 0;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement(), ++i)
    t->SetMMFWaveTrack(i == index ? 1 : 0);
  m_bModified = 1;
  return mf::kOk;
}

void CMidFileElement::SetWaveType(uint8_t first, uint8_t second) {
  m_byWaveType[0] = first;
  m_byWaveType[1] = second;
}

void CMidFileElement::GetWaveType(uint8_t* first, uint8_t* second) const {
  if (first) *first = m_byWaveType[0];
  if (second) *second = m_byWaveType[1];
}

int CMidFileElement::DecideTrackTableType() {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement()) t->DecideTrackTableType();
  return mf::kOk;
}

int CMidFileElement::InsertNoteEvent(int trackIndex, uint32_t start, int durationID, uint8_t key,
                                     uint8_t velocity) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  if (!m_pTrackHead) return mf::kErrNoTrack;
  CMidTrackElement* t = GetTrackByIndex(trackIndex);
  if (!t) return mf::kErrTrackIndex;
  if (t->InsertNoteEvent(start, durationID, key, velocity) != 0) return mf::kErrTrackInsert;
  m_bModified = 1;
  return mf::kOk;
}

int CMidFileElement::DelNoteEvent(int trackIndex, uint32_t time) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  if (!m_pTrackHead) return mf::kErrNoTrack;
  CMidTrackElement* t = GetTrackByIndex(trackIndex);
  if (!t) return mf::kErrTrackIndex;
  if (t->DelNoteEvent(time) != 0) return mf::kErrTrackInsert;
  m_bModified = 1;
  return mf::kOk;
}

int CMidFileElement::CopyFrom(const CMidFileElement& other) {
  if (&other == this) return mf::kOk;
  ReleaseMidFile();
  m_loadedData = other.m_loadedData;
  for (CMidTrackElement* t = other.m_pTrackHead; t; t = t->GetNextElement()) {
    CMidTrackElement* copy = t->Duplicate();
    if (!m_pTrackHead)
      m_pTrackHead = copy;
    else
      m_pTrackHead->AppendNewTrack(copy);
    ++m_nTrackNum;
  }
  m_nMidiFormat = other.m_nMidiFormat;
  m_nDeclaredTrackNum = other.m_nDeclaredTrackNum;
  m_nDivision = other.m_nDivision;
  m_nTempo = other.m_nTempo;
  std::memcpy(m_byTimeSignature, other.m_byTimeSignature, 4);
  std::memcpy(m_szCopyright, other.m_szCopyright, sizeof(m_szCopyright));
  std::memcpy(m_szSongTitle, other.m_szSongTitle, sizeof(m_szSongTitle));
  std::memcpy(m_szPendingTrackName, other.m_szPendingTrackName, sizeof(m_szPendingTrackName));
  std::memcpy(m_szPendingInstrumentName, other.m_szPendingInstrumentName,
              sizeof(m_szPendingInstrumentName));
  std::memcpy(m_szFileName, other.m_szFileName, sizeof(m_szFileName));
  m_bFromFile = other.m_bFromFile;
  m_bMIPExist = other.m_bMIPExist;
  m_byDeviceID = other.m_byDeviceID;
  std::memcpy(m_byMIPChannel, other.m_byMIPChannel, sizeof(m_byMIPChannel));
  std::memcpy(m_byMIPValue, other.m_byMIPValue, sizeof(m_byMIPValue));
  m_nMIPCount = other.m_nMIPCount;
  m_nPolyphonyLimit = other.m_nPolyphonyLimit;
  m_bPendingWave = other.m_bPendingWave;
  m_pendingWaveList = other.m_pendingWaveList;
  m_byWaveType[0] = other.m_byWaveType[0];
  m_byWaveType[1] = other.m_byWaveType[1];
  m_MMFInfo = other.m_MMFInfo;
  m_bLoaded = other.m_bLoaded;
  m_bInformationLost = other.m_bInformationLost;
  m_bModified = other.m_bModified;
  m_bNoteOffByZeroVelocity = other.m_bNoteOffByZeroVelocity;
  m_nEventMode = other.m_nEventMode;
  m_nSelectStart = other.m_nSelectStart;
  m_nSelectStop = other.m_nSelectStop;
  return mf::kOk;
}

CMidFileElement* CMidFileElement::Duplicate() const {
  CMidFileElement* copy = new CMidFileElement;
  copy->CopyFrom(*this);
  return copy;
}

int CMidFileElement::CheckSetVelocityValid(int delta) const {
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
    if (!t->CheckSetVelocityValid(delta)) return 0;
  return 1;
}

int CMidFileElement::SetVelocity(int delta) {
  if (!CheckSetVelocityValid(delta)) return -1;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement()) t->SetVelocity(delta);
  return mf::kOk;
}

int CMidFileElement::GetVelocity(int* min, int* max, int* average) const {
  int lo = 0, hi = 0, sum = 0, count = 0;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement()) {
    int tmax = 0, tmin = 0, tsum = 0, tcount = 0;
    t->GetVelocity(&tmax, &tmin, nullptr, &tsum, &tcount);
    if (tcount == 0) continue;
    hi = std::max(hi, tmax);
    lo = lo == 0 ? tmin : std::min(lo, tmin);
    sum += tsum;
    count += tcount;
  }
  if (min) *min = lo;
  if (max) *max = hi;
  if (average) *average = count ? sum / count : 0;
  return mf::kOk;
}

int CMidFileElement::SetGetMidEventMode(int mode) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  m_nEventMode = mode;
  if (mode != MIDEVENT_MODE_KEEP)
    for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
      t->SetGetMidiEventMode(mode);
  return mf::kOk;
}

int CMidFileElement::SetSPMidiMode(int enable, int limit) {
  m_bMIPExist = enable ? 1 : 0;
  if (limit != -1) m_nPolyphonyLimit = limit;
  return mf::kOk;
}

int CMidFileElement::GetMIPData(uint8_t channels[kMaxMipPairs], uint8_t mips[kMaxMipPairs]) const {
  for (int i = 0; i < m_nMIPCount; ++i) {
    if (channels) channels[i] = m_byMIPChannel[i];
    if (mips) mips[i] = m_byMIPValue[i];
  }
  return m_nMIPCount;
}

int CMidFileElement::SetMA2LedStatus(int track) {
  return m_MMFInfo.SetMA2LedStatus(track);
}

int CMidFileElement::GetMA2LedStatus(int* track) const {
  return m_MMFInfo.GetMA2LedStatus(track);
}

int CMidFileElement::SetVibStatus(int track, int on) {
  return m_MMFInfo.SetVibStatus(track, on);
}

int CMidFileElement::GetVibStatus(int track, int* on) const {
  return m_MMFInfo.GetVibStatus(track, on);
}

// MIP values shared out of the polyphony limit L from the first enabled track's reserved voices r:
// either r for the first track and an even share of L - r for each further one, or the running
// sum of every track's reserved voices.
int CMidFileElement::CalcMIPValues(int values[kMaxMipPairs]) {
  std::vector<int> reserved;
  for (CMidTrackElement* t = m_pTrackHead; t && reserved.size() < kMaxMipPairs;
       t = t->GetNextElement()) {
    if (!t->IsEnabled()) continue;
    // The stored count: a track without notes keeps its earlier value (-1 when never counted).
    t->CaculateReservedValue();
    reserved.push_back(t->GetReservedValue());
  }
  const int enabled = static_cast<int>(reserved.size());
  if (enabled == 0) return 0;
  int r = reserved[0];
  const int limit = m_nPolyphonyLimit;
  if ((r < limit && enabled > 1) || (r >= limit && r > 3 && limit > 3)) {
    if (r >= limit && r > 3) r = limit - 2;
    values[0] = r;
    double sum = r;
    double step = enabled > 1 ? static_cast<double>(limit - r) / (enabled - 1) : 0.0;
    for (int i = 1; i < enabled; ++i) {
      sum += step;
      values[i] = static_cast<int>(std::floor(sum + 0.5));
    }
  } else {
    int sum = 0;
    for (int i = 0; i < enabled; ++i) {
      sum += reserved[i];
      values[i] = sum;
    }
  }
  return enabled;
}

const unsigned char* CMidFileElement::GetMidiFileBuf(int format, unsigned long* size,
                                                     uint32_t startTime, uint32_t stopTime,
                                                     int enabledOnly) {
  if (size) *size = 0;
  m_nLastResult = m_bLoaded ? _Produce(format, startTime, stopTime, enabledOnly)
                            : static_cast<int>(mf::kErrNotLoaded);
  if (m_nLastResult != mf::kOk) {
    m_outBuffer.clear();
    return nullptr;
  }
  if (size) *size = static_cast<unsigned long>(m_outBuffer.size());
  return m_outBuffer.data();
}

void CMidFileElement::ReleaseMidiFileBuf() {
  m_outBuffer.clear();
  m_outBuffer.shrink_to_fit();
}

int CMidFileElement::_Produce(int format, uint32_t startTime, uint32_t stopTime, int enabledOnly) {
  if (format == kFormatLoaded) format = m_nMidiFormat;
  if (m_nTrackNum > 1) format = 1;
  if (format != 0 && format != 1) return mf::kErrFormat;
  const bool ranged = startTime < stopTime;
  const uint32_t base = ranged ? startTime : 0;

  std::vector<CMidTrackElement*> tracks;
  for (CMidTrackElement* t = m_pTrackHead; t; t = t->GetNextElement())
    if (!enabledOnly || (t->IsEnabled() && !t->IsEmpty())) tracks.push_back(t);
  if (format == 0 && tracks.empty()) return mf::kErrNoTrackToWrite;

  hs::ByteWriter w(kOutputCapacity);
  size_t estimate = 256;
  for (CMidTrackElement* t : tracks) estimate += 64 + size_t{t->GetNoteCount()} * 10;
  w.reserve(estimate);
  MidiOut out(w);
  w.fourcc("MThd");
  w.u32be(6);
  w.u16be(static_cast<uint16_t>(format));
  // With enabledOnly the count is of enabled tracks, empty ones included although they get no
  // chunk; readers settle for the chunks present.
  const size_t declared = enabledOnly ? static_cast<size_t>(GetEnabledTrackNum()) : m_nTrackNum;
  w.u16be(static_cast<uint16_t>(format == 0 ? 1 : declared + 1));
  w.u16be(m_nDivision);

  const uint16_t tempo = m_nTempo ? m_nTempo : 120;
  const uint32_t usPerQuarter = 60000000u / tempo;
  const uint8_t tempoBytes[3] = {uint8_t(usPerQuarter >> 16), uint8_t(usPerQuarter >> 8),
                                 uint8_t(usPerQuarter)};

  auto writeMip = [&]() {
    if (!m_bMIPExist) return;
    int values[kMaxMipPairs] = {0};
    CalcMIPValues(values);
    std::vector<uint8_t> body = {0x7F, uint8_t(m_byDeviceID == 0xFF ? 0x7F : m_byDeviceID), 0x0B,
                                 0x01};
    int enabledIndex = 0;
    for (CMidTrackElement* t = m_pTrackHead; t && enabledIndex < kMaxMipPairs;
         t = t->GetNextElement()) {
      if (!t->IsEnabled()) continue;
      if (!t->IsEmpty()) {
        body.push_back(t->GetChannelNum() & 0x0F);
        body.push_back(static_cast<uint8_t>(std::min(std::max(values[enabledIndex], 0), 127)));
      }
      ++enabledIndex;
    }
    body.push_back(0xF7);
    // The declared length counts a pair for every enabled track (at most 16), even an empty one
    // whose pair is not written.
    const int enabledTracks = std::min(GetEnabledTrackNum(), static_cast<int>(kMaxMipPairs));
    w.u8(0);
    w.u8(0xF0);
    w.u8(static_cast<uint8_t>(5 + 2 * enabledTracks));
    w.bytes(body.data(), body.size());
  };
  auto writeTrackInfo = [&](CMidTrackElement* t) {
    const uint8_t ch = t->GetChannelNum() & 0x0F;
    out.ShortText(0x03, t->GetTrackName());
    out.ShortText(0x04, t->GetInstrumentName());
    uint8_t v = 0;
    if (t->GetBankSelectMSB(&v) == 0) out.Channel(static_cast<uint8_t>(0xB0 | ch), 0x00, v & 0x7F);
    if (t->GetBankSelectLSB(&v) == 0) out.Channel(static_cast<uint8_t>(0xB0 | ch), 0x20, v & 0x7F);
    if (t->GetProgram() != -1) {
      w.u8(0);
      w.u8(static_cast<uint8_t>(0xC0 | ch));
      w.u8(static_cast<uint8_t>(t->GetProgram() & 0x7F));
    }
  };
  auto writeSmafTags = [&](CMidTrackElement* t) {
    const int index = t->GetTrackIndex();
    if (index < 0) return;
    char digits[16];
    std::snprintf(digits, sizeof(digits), "%02d", index % 100);
    int led = -1, vib = 0;
    if (m_MMFInfo.GetMA2LedStatus(&led) == 0 && led == index) {
      std::string text = std::string(kTagLed) + digits;
      out.Meta(0x01, text.data(), text.size(), true);
    }
    if (m_MMFInfo.GetVibStatus(index, &vib) == 0 && vib) {
      std::string text = std::string(kTagVib) + digits;
      out.Meta(0x01, text.data(), text.size(), true);
    }
    if (t->IsMMFWaveTrack()) {
      std::string text = std::string(kTagWave) + digits;
      text.push_back(static_cast<char>(m_byWaveType[0]));
      text.push_back(static_cast<char>(m_byWaveType[1]));
      if (t->GetMMFWavFileLst()) text += t->GetMMFWavFileLst();
      out.Meta(0x01, text.data(), text.size(), true);
    }
  };
  auto writeNotes = [&](const std::vector<ChannelEvent>& events) {
    uint32_t last = base;
    for (const ChannelEvent& ce : events) {
      uint32_t t = ce.e.nTime < base ? base : ce.e.nTime;
      out.Note(t - last, ce.e, ce.channel);
      last = t;
    }
    out.Flush();
  };
  auto collect = [&](CMidTrackElement* t, std::vector<ChannelEvent>* events) {
    NoteEventInfo e;
    for (int rc = t->GetFirstNoteBySequence(&e, startTime, ranged ? stopTime : 0); rc == 0;
         rc = t->GetNextNoteBySequence(&e))
      events->push_back({e, t->GetChannelNum()});
  };
  auto writeTrackNotes = [&](CMidTrackElement* t) {
    NoteEventInfo e;
    uint32_t last = base;
    const uint8_t channel = t->GetChannelNum();
    for (int rc = t->GetFirstNoteBySequence(&e, startTime, ranged ? stopTime : 0); rc == 0;
         rc = t->GetNextNoteBySequence(&e)) {
      uint32_t time = e.nTime < base ? base : e.nTime;
      out.Note(time - last, e, channel);
      last = time;
    }
    out.Flush();
  };
  const size_t copyrightLength = std::strlen(m_szCopyright);

  if (format == 1) {
    size_t at = out.BeginTrack();
    writeMip();
    out.Meta(0x58, m_byTimeSignature, 4, false);
    out.Meta(0x51, tempoBytes, 3, false);
    if (copyrightLength)
      out.Meta(0x02, m_szCopyright, std::min<size_t>(copyrightLength, 255), false);
    out.EndOfTrack(at);
    for (CMidTrackElement* t : tracks) {
      size_t trackAt = out.BeginTrack();
      writeTrackInfo(t);
      writeSmafTags(t);
      writeTrackNotes(t);
      out.EndOfTrack(trackAt);
      if (!w.ok()) break;
    }
  } else {
    size_t at = out.BeginTrack();
    writeMip();
    out.Meta(0x51, tempoBytes, 3, false);
    out.Meta(0x58, m_byTimeSignature, 4, false);
    if (copyrightLength)
      out.Meta(0x02, m_szCopyright, std::min<size_t>(copyrightLength, 255), false);
    writeTrackInfo(tracks[0]);
    writeSmafTags(tracks[0]);
    if (tracks.size() == 1) {
      writeTrackNotes(tracks[0]);
      out.EndOfTrack(at);
      if (!w.ok() || w.size() == 0) return mf::kErrNothingProduced;
      m_outBuffer = w.take();
      return mf::kOk;
    }
    std::vector<ChannelEvent> events;
    for (CMidTrackElement* t : tracks)
      if (!enabledOnly || t->IsEnabled()) collect(t, &events);
    std::stable_sort(events.begin(), events.end(),
                     [](const ChannelEvent& a, const ChannelEvent& b) {
                       // Each track's events are already in writing order; channels do not
                       // interact, so a merge by time keeps each track's order.
                       return a.e.nTime < b.e.nTime;
                     });
    writeNotes(events);
    out.EndOfTrack(at);
  }
  if (!w.ok() || w.size() == 0) return mf::kErrNothingProduced;
  m_outBuffer = w.take();
  return mf::kOk;
}

int CMidFileElement::SaveAsMidiFile(const char* path, int format, uint32_t startTime,
                                    uint32_t stopTime, int enabledOnly) {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  int rc = _Produce(format, startTime, stopTime, enabledOnly);
  if (rc != mf::kOk) {
    m_outBuffer.clear();
    return rc;
  }
  if (m_outBuffer.empty()) return mf::kErrNothingProduced;
  std::FILE* f = path ? std::fopen(path, "w+b") : nullptr;
  if (!f) {
    ReleaseMidiFileBuf();
    return mf::kErrOpen;
  }
  size_t written = std::fwrite(m_outBuffer.data(), 1, m_outBuffer.size(), f);
  int closed = std::fclose(f);
  bool ok = written == m_outBuffer.size() && closed == 0;
  ReleaseMidiFileBuf();
  return ok ? mf::kOk : mf::kErrOpen;
}

int CMidFileElement::SaveMidiFile() {
  if (!m_bLoaded) return mf::kErrNotLoaded;
  if (!m_bFromFile) return mf::kErrOpen;
  int rc = SaveAsMidiFile(m_szFileName, kFormatLoaded);
  if (rc == mf::kOk) SetModified(0);
  return rc;
}
