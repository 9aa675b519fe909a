#include "handset/platform/Console.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

bool HsStreamIsTerminal(std::FILE* stream) {
  if (!stream) return false;
#if defined(_WIN32)
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}
