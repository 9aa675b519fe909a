#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "handset/export.h"

/// An owned byte string (text in the ANSI code page, UTF-8 on POSIX). It is a std::string with
/// the few framework-style names the rest of the library uses.
class HANDSET_API CString : public std::string {
 public:
  using std::string::string;
  CString() = default;
  CString(const std::string& s) : std::string(s) {}
  CString(std::string&& s) : std::string(std::move(s)) {}
  /// A null pointer gives an empty string.
  CString(const char* s) : std::string(s ? s : "") {}

  int GetLength() const { return static_cast<int>(size()); }
  bool IsEmpty() const { return empty(); }
  void Empty() { clear(); }
  const char* GetString() const { return c_str(); }
  /// Comparison ignoring case, like strcasecmp: <0, 0 or >0. Letters beyond ASCII fold too: UTF-8
  /// on POSIX (accented Latin, Greek, Cyrillic... by their simple lower-case mapping), the system
  /// code page on Windows. Bytes that form no character compare as they are.
  int CompareNoCase(const char* other) const;
  /// printf-style formatting into this string.
  void Format(const char* fmt, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;
};

/// An ordered list of owned strings.
class HANDSET_API CStringList : public std::vector<CString> {
 public:
  void AddTail(const CString& s) { push_back(s); }
  int GetCount() const { return static_cast<int>(size()); }
  bool IsEmpty() const { return empty(); }
  void RemoveAll() { clear(); }
  const CString& GetAt(int i) const { return at(static_cast<size_t>(i)); }
};

/// The toolkit's string type; the same owned byte string.
using CxString = CString;

/// The toolkit's string list, which can also split a text into tokens.
class HANDSET_API CxStringList : public CStringList {
 public:
  /// Splits `text` at every character of `separators` and appends the pieces. Empty pieces are
  /// kept when `keepEmpty` is true, dropped otherwise. Returns the number of pieces appended.
  int AddTokens(const char* text, const char* separators, bool keepEmpty = false);
};

/// An ordered list of untyped pointers; it never owns what they point to.
class HANDSET_API CPtrList : public std::vector<void*> {
 public:
  void AddTail(void* p) { push_back(p); }
  int GetCount() const { return static_cast<int>(size()); }
  bool IsEmpty() const { return empty(); }
  void RemoveAll() { clear(); }
  void* GetAt(int i) const { return at(static_cast<size_t>(i)); }
};

using CxPtrList = CPtrList;

/// An ordered list of pointers of one type (`T` is the pointer type, as in
/// `CxTypedPtrList<CSmMedia*>`); it never owns what they point to.
template <class T>
class CxTypedPtrList : public std::vector<T> {
 public:
  void AddTail(T p) { this->push_back(p); }
  int GetCount() const { return static_cast<int>(this->size()); }
  bool IsEmpty() const { return this->empty(); }
  void RemoveAll() { this->clear(); }
  T GetAt(int i) const { return this->at(static_cast<size_t>(i)); }
  /// Index of the first element equal to `p`, or -1.
  int Find(T p) const {
    for (size_t i = 0; i < this->size(); ++i)
      if ((*this)[i] == p) return static_cast<int>(i);
    return -1;
  }
  /// Removes the element at `i`; out of range does nothing.
  void RemoveAt(int i) {
    if (i >= 0 && static_cast<size_t>(i) < this->size()) this->erase(this->begin() + i);
  }
};

/// The extension of a path: the text after the last '.', without the dot. Empty when there is no
/// dot, or when the last dot belongs to a directory name.
HANDSET_API CString GetFileType(const char* path);
