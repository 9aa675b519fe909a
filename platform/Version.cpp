#include "handset.h"

const char* HsVersion() {
  return "0.1.0";
}
