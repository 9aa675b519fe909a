#pragma once

#include "handset/export.h"
#include "handset/messaging/MmsBody.h"
#include "handset/platform/Strings.h"

/// Formats of MMS project files (GetMMSFileFormat).
enum EMmsFileFormat {
  MMS_FILE_UNKNOWN = 0,
  MMS_FILE_SMIL = 1,  ///< a SMIL presentation
  MMS_FILE_MCF = 2,   ///< a composer project (".mcf")
  MMS_FILE_XMM = 3    ///< a composer project (".xmm")
};

/// The format of the file at `path`: MMS_FILE_SMIL when its first element is <smil> (UTF-8,
/// UTF-16 with or without a byte-order mark, with or without an XML declaration), else
/// MMS_FILE_MCF or MMS_FILE_XMM by the extension of a composer project, else 0 (also when the
/// file cannot be read).
HANDSET_API int GetMMSFileFormat(const char* path);

/// Lists the media files a SMIL presentation references: `strFolder` receives the folder of the
/// presentation (where the names are relative to), `lstFiles` the names in document order, each
/// once. The src of img, text, audio, video, ref, animation and textstream elements are taken;
/// "cid:ID" stands for the file named ID in that folder, or else the first (by name) whose name
/// without extension is ID, and is left out when there is none. References with a scheme
/// ("http:"), absolute paths and paths that climb out with ".." are left out. Returns false
/// (outputs empty) when the file cannot be read or is not a presentation.
HANDSET_API bool GetSMILRelationFile(const char* path, CString& strFolder, CStringList& lstFiles);

/// Unpacks a composer project into `workFolder` and lists its media like GetSMILRelationFile.
/// The composer project formats are not read by this library: it always returns false and
/// leaves the outputs empty.
HANDSET_API bool UnpackMCFFile(const char* path, const char* workFolder, const char* projectName,
                               CString& strFolder, CStringList& lstFiles);

/// Appends the presentation at `smilPath` (first) and every media file it references that can
/// be read and is not empty to `body`, each sent under the name the presentation uses for it
/// (Content-Location) and, for a "cid:" reference, with that content id. Returns the number of
/// objects added, or -1 when the file is not a readable presentation.
HANDSET_API int MmsAddPresentationToBody(const char* smilPath, CMmsBody* body);

/// The size in octets of the m-send-req that a message composed from the file at `path` takes
/// when it is sent, or 0 when the input cannot be used. A SMIL presentation is sized with the
/// media files it references (files that cannot be read or are empty are left out). For the
/// composer projects, `workFolder` is where the project would be unpacked (empty: the temporary
/// folder) and `projectName` the project's name; a project without a name gives 0, as do
/// projects in general (see UnpackMCFFile) and unknown formats.
HANDSET_API int GetMMSReqPduSize(const char* path, const char* workFolder, const char* projectName);
