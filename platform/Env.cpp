#include "platform/Env.h"

#include <cstdlib>

namespace hs {
namespace os {

bool SetEnv(const char* name, const char* value) {
  if (!name) return false;
#if defined(_WIN32)
  return _putenv_s(name, value ? value : "") == 0;
#else
  return value ? setenv(name, value, 1) == 0 : unsetenv(name) == 0;
#endif
}

}  // namespace os
}  // namespace hs
