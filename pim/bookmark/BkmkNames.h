#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "handset/platform/Strings.h"

// Names of exported bookmark files and folders: legal on every common file system, short enough
// for the phone and the file system, unique in their folder ignoring case.
namespace hs {
namespace bkmk {

/// Longest name a phone takes, in bytes and in UTF-16 units; 0 is no limit.
struct NameLimits {
  size_t bytes = 0;
  size_t units = 0;
};

/// `base` + `suffix` + `ext`, with `base` cut at a character boundary (one character at least is
/// kept) so that base and suffix fit `phone` and the whole name fits the file system; a cut that
/// leaves a trailing dot or space or a reserved device name is cleaned again.
std::string FitName(const std::string& base, const std::string& suffix, const std::string& ext,
                    const NameLimits& phone);

/// Maps what would make a name illegal at its ends: trailing dots and spaces become '_', and a
/// reserved device name (CON, PRN, AUX, NUL, COM0-9, LPT0-9, with any extension) gets '_' after
/// its stem ("LPT1.txt" becomes "LPT1_.txt"). Returns where that '_' went, or npos.
size_t CleanNameEnds(std::string* name);

/// The names taken in one folder, compared ignoring case, with the next counter to try for each
/// base name: taking n names of one base costs O(n), not O(n^2) tries.
class NameSet {
 public:
  /// Marks `name` taken; false when it (or a name differing only in case) already was.
  bool Take(const std::string& name);
  /// Takes the first free name of `base`, "base(1)", "base(2)", ... each followed by `ext` and
  /// fitted by FitName, and returns it.
  std::string TakeNext(const std::string& base, const std::string& ext, const NameLimits& phone);

 private:
  std::unordered_set<std::string> used_;
  std::unordered_map<std::string, int> next_;
};

}  // namespace bkmk
}  // namespace hs
