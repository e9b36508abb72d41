#pragma once

#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/sftp/SftpSettings.h"
#include "engine/providers/ssh/SshConnector.h"
#include "engine/providers/ssh/SshPlace.h"
#include "tests/support/ScriptedPrompts.h"
#include "tests/support/TestControl.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {

/// Sends what begins SFTP and returns the server's answer: its version, and what it can.
inline QByteArray Greet(SftpChannel& channel) {
  QByteArray unsent = QByteArray::fromHex("000000050100000003");
  QByteArray came;
  while (came.size() < 9) {
    came += channel.Exchange(unsent);
  }
  return came;
}

/// What begins the answer of a server that has SFTP version 3: its length is left out.
inline const QByteArray kVersion3 = QByteArray::fromHex("0200000003");

}  // namespace trevane::test
