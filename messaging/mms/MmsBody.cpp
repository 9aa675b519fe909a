#include "handset/messaging/MmsBody.h"

CMmsBody::~CMmsBody() {
  Reset();
}

CMmsBody::CMmsBody(const CMmsBody& other) {
  *this = other;
}

CMmsBody& CMmsBody::operator=(const CMmsBody& other) {
  if (this == &other) return *this;
  Reset();
  for (const CMmsMediaObj* obj : other.m_objects) m_objects.AddTail(new CMmsMediaObj(*obj));
  return *this;
}

CMmsMediaObj* CMmsBody::CreateMediaObject(const char* fileName, const void* data, uint32_t size) {
  if (!data && size) return nullptr;
  CMmsMediaObj* obj = new CMmsMediaObj;
  obj->SetFileName(fileName);
  obj->SetData(data, size);
  m_objects.AddTail(obj);
  return obj;
}

CMmsMediaObj* CMmsBody::CreateMediaObjectRef(const char* path, uint8_t* data, uint32_t size,
                                             bool autoDelete) {
  if (!data && size) return nullptr;
  CMmsMediaObj* obj = new CMmsMediaObj;
  obj->SetFileName(path);
  obj->AttachData(data, size, autoDelete);
  m_objects.AddTail(obj);
  return obj;
}

CMmsMediaObj* CMmsBody::GetAt(int index) const {
  return index >= 0 && index < m_objects.GetCount() ? m_objects.GetAt(index) : nullptr;
}

CMmsMediaObj* CMmsBody::AddObject(CMmsMediaObj* obj) {
  if (obj) m_objects.AddTail(obj);
  return obj;
}

bool CMmsBody::RemoveAt(int index) {
  CMmsMediaObj* obj = GetAt(index);
  if (!obj) return false;
  m_objects.RemoveAt(index);
  delete obj;
  return true;
}

void CMmsBody::Reset() {
  for (CMmsMediaObj* obj : m_objects) delete obj;
  m_objects.RemoveAll();
}
