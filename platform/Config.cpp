#include <cstdio>

#include "handset/platform/Config.h"
#include "handset/platform/MessageBox.h"
#include "platform/Os.h"

char g_szRegRootPath[260] = "Software\\Handset";
CString g_strRCLanguageID = "English";
uint8_t g_byteRCCharset = 0;
int g_intRCFontHeightMinus = 0;
void* g_hSkinInstance = nullptr;
int32_t g_bMP3GlobalOn = 1;
int32_t g_gif_tiff_enable = 1;

namespace {

int DefaultMessageBox(const char* text, const char* caption, unsigned, void*) {
  std::fprintf(stderr, "%s: %s\n", caption && *caption ? caption : "handset", text ? text : "");
  return 1;
}

HsMessageBoxHandler g_handler = DefaultMessageBox;
void* g_handlerUser = nullptr;

}  // namespace

void HsSetMessageBoxHandler(HsMessageBoxHandler handler, void* user) {
  g_handler = handler ? handler : DefaultMessageBox;
  g_handlerUser = handler ? user : nullptr;
}

int HsMessageBox(const char* text, const char* caption, unsigned flags) {
  if (g_strRCLanguageID == "Arabic") flags |= HS_MB_RTLREADING;
  return g_handler(text, caption, flags, g_handlerUser);
}

bool CMP3Toolbox::IsCodecInstalled() {
  static const bool installed = hs::os::Module::CanLoad("mpg123");
  return installed;
}
