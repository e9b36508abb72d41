#include "app/ParseCommandLine.h"

namespace trevane {

namespace {

bool IsBlank(QChar character) {
  return character == u' ' || character == u'\t';
}

}  // namespace

qint16 ParseCommandLine(const QString& text, ArgumentBuffer& arguments) {
  enum class State { Between, Plain, Quoted };
  constexpr qint16 kUpperBound = std::tuple_size_v<ArgumentBuffer>;

  arguments.fill({});
  qint16 index = text.isEmpty() ? 0 : 1;
  State state = State::Between;
  for (const QChar character : text) {
    if (state == State::Between) {
      if (character == u'"') {
        state = State::Quoted;
      } else if (!IsBlank(character)) {
        state = State::Plain;
        arguments[static_cast<std::size_t>(index - 1)] += character;
      }
      continue;
    }
    const bool ends = state == State::Plain ? IsBlank(character) : character == u'"';
    if (!ends) {
      arguments[static_cast<std::size_t>(index - 1)] += character;
    } else if (index == kUpperBound) {
      break;
    } else {
      ++index;
      state = State::Between;
    }
  }
  if (state == State::Between) {
    --index;
  }
  return index > 0 ? index : qint16{0};
}

}  // namespace trevane
