#include "handset/melody/Mid2iMelody.h"

#include <cstdio>

#include "handset/melody/MidFileElement.h"
#include "handset/melody/MidTrackElement.h"
#include "handset/platform/Results.h"
#include "melody/imelody/ImyText.h"

CMid2iMelody::CMid2iMelody() = default;

CMid2iMelody::~CMid2iMelody() {
  if (m_bOwnsFile) delete m_pMidFile;
}

void CMid2iMelody::SetLimit(int noteLimit, int sizeLimit) {
  m_nNoteLimit = noteLimit < 0 ? -1 : noteLimit;
  m_nSizeLimit = sizeLimit < 0 ? -1 : sizeLimit;
}

int CMid2iMelody::DoConvertMidElelemt2Str(CMidFileElement* file, CString& text) {
  if (!file) return hs::mid2imy::kErrNullFile;
  if (file->GetTrackNum() > 1) return hs::mid2imy::kErrMultiTrack;
  m_bBusy = 1;
  m_pMidFile = file;
  m_strOutput.Empty();
  _ProduceHeader();
  int rc = _ProduceMelody();
  m_strOutput += "END:IMELODY\r\n";
  text = m_strOutput;
  m_pMidFile = nullptr;
  m_bBusy = 0;
  return rc;
}

void CMid2iMelody::_ProduceHeader() {
  CString line;
  m_strOutput += "BEGIN:IMELODY\r\n";
  line.Format("VERSION:%s\r\n", "1.2");
  m_strOutput += line;
  line.Format("FORMAT:%s\r\n", "CLASS1.0");
  m_strOutput += line;
  // The name line is prepared but deliberately left out: the header keeps a fixed set of lines.
  if (!m_strName.IsEmpty()) line.Format("NAME:%s\r\n", m_strName.c_str());
  int beat = m_pMidFile->GetTempo();
  beat = beat < 25 ? 25 : (beat > 900 ? 900 : beat);
  line.Format("BEAT:%d\r\n", beat);
  m_strOutput += line;
  line.Format("STYLE:S%d\r\n", m_nStyle);
  m_strOutput += line;
  line.Format("VOLUME:V%d\r\n", m_nVolumeLvl);
  m_strOutput += line;
}

int CMid2iMelody::_ProduceMelody() {
  m_pMidFile->SetGetMidEventMode(MIDEVENT_MODE_MELODY);
  CMidTrackElement* track = nullptr;
  for (int i = 0; i < static_cast<int>(m_pMidFile->GetTrackNum()); ++i) {
    CMidTrackElement* t = m_pMidFile->GetTrackByIndex(i);
    if (t && t->IsEnabled()) {
      track = t;
      break;
    }
  }
  // Without a track to write there is no melody at all, not even an empty MELODY line.
  if (!track) return hs::mid2imy::kErrNoEnabledTrack;
  hs::imy::MelodyLines lines(m_strOutput, m_nNoteLimit, m_nSizeLimit);
  NoteIDInfo id{};
  int more = track->GetFirstIDs(&id, m_pMidFile->GetSelectStartTimePoint(),
                                m_pMidFile->GetSelectStopTimePoint());
  // A silent note is how iMelody rests come back from a MIDI file, so it is written as a rest.
  while (more == 0 &&
         lines.Add(id.bRest != 0 || id.byVelocity == 0, id.byNoteValue, id.nDurationID))
    more = track->GetNextIDs(&id);
  m_strOutput += lines.Finish();
  return hs::mid2imy::kOk;
}

int CMid2iMelody::DoConvert2Str(const char* midiPath, CString& text) {
  if (m_bOwnsFile) delete m_pMidFile;
  m_pMidFile = nullptr;
  m_bOwnsFile = 0;
  CMidFileElement* file = new CMidFileElement();
  m_nLoadResult = file->LoadMidiFile(midiPath ? midiPath : "");
  if (m_nLoadResult != 0) {
    delete file;
    return m_nLoadResult;
  }
  int rc = DoConvertMidElelemt2Str(file, text);
  m_pMidFile = file;
  m_bOwnsFile = 1;
  return rc;
}

int CMid2iMelody::DoConvert2File(const char* midiPath, const char* imelodyPath) {
  CString text;
  int rc = DoConvert2Str(midiPath, text);
  if (m_nLoadResult != 0) return rc;
  std::FILE* f = imelodyPath ? std::fopen(imelodyPath, "wb") : nullptr;
  if (!f) return hs::midifile::kErrOpen;
  size_t put = std::fwrite(text.data(), 1, text.size(), f);
  bool ok = std::fclose(f) == 0 && put == text.size();
  return ok ? rc : hs::midifile::kErrOpen;
}
