#include "engine/providers/curl/IsAnswerTo.h"

#include <QByteArrayView>

#include <algorithm>
#include <array>

namespace trevane::curl {
namespace {

struct Row {
  QByteArrayView verb;
  /// 0: none more.
  std::array<int, 4> codes;
};

constexpr std::array<Row, 16> kRows{{
    {"CDUP", {200, 250}},
    {"CWD", {200, 250}},
    {"DELE", {200, 250}},
    {"MDTM", {213, 253, 250, 200}},
    {"MFMT", {213, 253, 250, 200}},
    {"MKD", {257, 250}},
    {"MLST", {250, 213}},
    {"NOOP", {200, 202, 250}},
    {"PWD", {257}},
    {"REST", {350}},
    {"RMD", {200, 250}},
    {"RNFR", {350}},
    {"RNTO", {200, 250}},
    {"SIZE", {213}},
    {"STAT", {211, 212, 213}},
    {"TYPE", {200}},
}};

}  // namespace

bool IsAnswerTo(const QByteArray& command, const ftp::Reply& reply) {
  constexpr int kFirstRefusal = 400;
  if (reply.code >= kFirstRefusal) {
    return true;
  }
  const QByteArray verb = command.left(command.indexOf(' ')).toUpper();
  const auto row =
      std::find_if(kRows.begin(), kRows.end(), [&](const Row& each) { return each.verb == verb; });
  return row == kRows.end() ||
         std::find(row->codes.begin(), row->codes.end(), reply.code) != row->codes.end();
}

}  // namespace trevane::curl
