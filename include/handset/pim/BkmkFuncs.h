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

/// Makes the names of siblings unique below `node`: sub-folders first, then each child whose
/// title equals, ignoring case, the title an earlier sibling has by then becomes "title(1)", or
/// "title(2)" when that is taken too, and so on. Linear in the number of children.
HANDSET_API void _BKMK_PreProcessVbkmFileName(CBkmkObj* node);
/// Writes the children of `node` into `folder` (created when missing): sub-folders as folders,
/// bookmarks as "title.vbm" with the title made legal by `_BKMK_LegalFileName`. A name already
/// present in the folder, ignoring case, gets "(1)", "(2)", ... after the title. Names are cut
/// (keeping ".vbm" and the counter) to the phone's limits from the nearest `m_pGenCap` (file or
/// folder name, single-byte and wide) and to the file system's 255. Every file and folder is
/// created new: an existing entry of that name, a link included even when it dangles, is never
/// opened or written through; it only makes the next name be taken. A file that fails is removed
/// again. The paths written are appended to `written` (may be null). `flag`: BKMK_FLAG_OEM or 0.
/// Returns 1 when everything was written; otherwise 0, with the reason in `_BKMK_GetLastError`.
HANDSET_API int _BKMK_ExportVbkm(CBkmkObj* node, const char* folder, int flag,
                                 CStringList* written);
/// Imports `path` under `parent`: a ".vbm" file becomes a bookmark (either dialect, see
/// `_VBKM_Parse`), a folder becomes a folder node with its ".vbm" files and sub-folders
/// (sub-folders first, each group sorted by name). Inside a folder, links are followed only when
/// they lead to something inside the imported folder, and a folder reached twice (same device and
/// inode) is read once, so links such as "a -> ." cannot make the walk loop; sub-folders reached
/// only through such links come after the real ones. Files that cannot be read are left out.
/// Returns the new node (owned by `parent`), or null when nothing could be read. `flag`:
/// BKMK_FLAG_STRICT or 0. `_BKMK_GetLastError` names the first file that failed.
HANDSET_API CBkmkObj* _BKMK_ImportVbkm(CBkmkObj* parent, const char* path, int flag);
/// Imports each path with `_BKMK_ImportVbkm`; true when all were imported.
HANDSET_API bool _BKMK_ImportSelectedVbkms(CBkmkObj* parent, const CStringList& paths);
/// The ".vbm" file names (extension compared ignoring case) in `folder`, sorted; returns the count.
HANDSET_API int _BKMK_GetContainFileNames(const char* folder, CStringList& names);
/// The sub-folder names in `folder`, sorted; returns the count.
HANDSET_API int _BKMK_GetContainFolderNames(const char* folder, CStringList& names);
/// `title` made into a name that every common file system takes, Windows included: \ / : * ? < >
/// | " and control bytes and DEL become '_'; an empty name, "." and ".." become "_" (they name no
/// file of their own, or a folder above); trailing dots and spaces become '_'; a Windows device
/// name (CON, PRN, AUX, NUL, COM0-9, LPT0-9, CONIN$, CONOUT$; with any extension, any case) gets
/// '_' after it ("LPT1.txt" gives "LPT1_.txt").
HANDSET_API CString _BKMK_LegalFileName(const char* title);
/// Why the last `_BKMK_ExportVbkm` or `_BKMK_ImportVbkm` on this thread failed: the path, the
/// operation and the system's reason; "" when nothing failed.
HANDSET_API const char* _BKMK_GetLastError();
