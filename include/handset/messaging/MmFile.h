#pragma once

#include "handset/export.h"
#include "handset/messaging/MmsMessage.h"

/// A message being composed: the MMS message with the size its thumbnail is drawn at. Only the
/// message is used by this library (the .mm file with thumbnail and work folder is the host's).
class HANDSET_API CMmFile {
 public:
  /// A file with an empty m-send-req and a thumbnail of `thumbWidth` x `thumbHeight` pixels.
  CMmFile(int thumbWidth, int thumbHeight)
      : m_nThumbWidth(thumbWidth), m_nThumbHeight(thumbHeight) {}

  CMmsMessage& GetMessage() { return m_message; }
  const CMmsMessage& GetMessage() const { return m_message; }
  int GetThumbWidth() const { return m_nThumbWidth; }
  int GetThumbHeight() const { return m_nThumbHeight; }

 private:
  int m_nThumbWidth;
  int m_nThumbHeight;
  CMmsMessage m_message;
};
