#pragma once

#include "handset/export.h"
#include "handset/pim/BkmkObj.h"
#include "handset/platform/Strings.h"

/// Flags of `_BKMK_ExportVbkm` and `_BKMK_ImportVbkm`.
enum : int {
  BKMK_FLAG_NONE = 0,
  BKMK_FLAG_OEM = 1,     ///< export: write the dialect with X-S-BROWSERTYPE
  BKMK_FLAG_STRICT = 2,  ///< import: refuse files holding lines the vBookmark does not know
};

/// True when the file or folder exists. Paths may carry the "\\?\" long-path prefix.
HANDSET_API bool _BKMK_IsPathExist(const char* path);
/// Creates the folder and its missing parents; true when it exists afterwards.
HANDSET_API bool _BKMK_CreatePathFolder(const char* path);

/// The host's folder browser: shows `title`, starts at `*folder` and stores the choice there;
/// false when the user cancelled.
typedef bool (*BKMK_SELECTFOLDER_PROC)(void* context, const char* title, CString* folder);
/// Installs the folder browser (null removes it).
HANDSET_API void _BKMK_SetSelectFolderProc(BKMK_SELECTFOLDER_PROC proc, void* context);
/// Asks the host for a folder; false without a browser or when cancelled.
HANDSET_API bool _BKMK_SelectFolder(const char* title, CString* folder);

/// Makes the names of siblings unique below `node`: sub-folders first, then each child that
/// clashes (ignoring case) with an earlier sibling becomes "name(1)", "name(2)", ...
HANDSET_API void _BKMK_PreProcessVbkmFileName(CBkmkObj* node);
/// Writes the children of `node` into `folder` (created when missing): sub-folders as folders,
/// bookmarks as "title.vbm" with illegal characters replaced by '_' and "(n)" added to names
/// already taken. The paths written are appended to `written` (may be null). `flag`:
/// BKMK_FLAG_OEM or 0. Returns 1 when everything was written.
HANDSET_API int _BKMK_ExportVbkm(CBkmkObj* node, const char* folder, int flag,
                                 CStringList* written);
/// Imports `path` under `parent`: a ".vbm" file becomes a bookmark, a folder becomes a folder
/// node with its ".vbm" files and sub-folders (sub-folders first, each group sorted by name).
/// Returns the new node (owned by `parent`), or null when nothing could be read. `flag`:
/// BKMK_FLAG_STRICT or 0.
HANDSET_API CBkmkObj* _BKMK_ImportVbkm(CBkmkObj* parent, const char* path, int flag);
/// Imports each path with `_BKMK_ImportVbkm`; true when all were imported.
HANDSET_API bool _BKMK_ImportSelectedVbkms(CBkmkObj* parent, const CStringList& paths);
/// The ".vbm" file names (extension compared ignoring case) in `folder`, sorted; returns the count.
HANDSET_API int _BKMK_GetContainFileNames(const char* folder, CStringList& names);
/// The sub-folder names in `folder`, sorted; returns the count.
HANDSET_API int _BKMK_GetContainFolderNames(const char* folder, CStringList& names);
/// `title` made into a legal file name: \ / : * ? < > | " and control bytes become '_'; an empty
/// name, "." and ".." become "_".
HANDSET_API CString _BKMK_LegalFileName(const char* title);
