#pragma once

#include <cstdint>

#include "handset/export.h"
#include "handset/messaging/MmsMediaObj.h"
#include "handset/platform/Strings.h"

/// The ordered media objects of an MMS message. The body owns its objects and deletes them in
/// `Reset` and in its destructor.
class HANDSET_API CMmsBody {
 public:
  CMmsBody() = default;
  ~CMmsBody();
  /// Deep copies: every object is copied (with its own copy of the data).
  CMmsBody(const CMmsBody& other);
  CMmsBody& operator=(const CMmsBody& other);

  /// Appends an object named `fileName` holding a copy of `size` bytes of `data`. Returns the
  /// object (owned by the body), or null when `data` is null and `size` is not 0.
  CMmsMediaObj* CreateMediaObject(const char* fileName, const void* data, uint32_t size);
  /// Appends an object for the file at `path` that uses `data` in place. With `autoDelete` the
  /// body takes ownership of `data` (allocated with new uint8_t[]) and frees it with the object;
  /// otherwise the caller keeps it alive while the object lives. Returns the object, or null
  /// when `data` is null and `size` is not 0 (ownership is then not taken).
  CMmsMediaObj* CreateMediaObjectRef(const char* path, uint8_t* data, uint32_t size,
                                     bool autoDelete);
  /// The objects in order (owned by the body).
  const CxTypedPtrList<CMmsMediaObj*>& GetObjects() const { return m_objects; }
  int GetCount() const { return m_objects.GetCount(); }
  /// The object at `index`, or null when out of range.
  CMmsMediaObj* GetAt(int index) const;
  /// Appends `obj` and takes ownership of it; returns it (null is ignored).
  CMmsMediaObj* AddObject(CMmsMediaObj* obj);
  /// Deletes the object at `index`; false when out of range.
  bool RemoveAt(int index);
  /// Deletes every object.
  void Reset();

 private:
  CxTypedPtrList<CMmsMediaObj*> m_objects;
};
