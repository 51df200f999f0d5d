#include "formats/lines.h"

#include <algorithm>
#include <utility>

namespace fabscope::internal {

void LineReader::SkipByteOrderMark() {
  isBegun_ = true;
  while (input_.Unread().size() < ByteOrderMark.size() && input_.Fill()) continue;
  if (!input_.Unread().starts_with(ByteOrderMark)) return;
  input_.Consume(ByteOrderMark.size());
  behind_ = ByteOrderMark.size();
}

bool LineReader::Next(Line& line) {
  if (!isBegun_) SkipByteOrderMark();
  std::string_view unread = input_.Unread();
  std::size_t newline = unread.find('\n');
  while (newline == std::string_view::npos && unread.size() <= Input::MostOfALine) {
    const std::size_t searched = unread.size();
    const bool isMore = input_.Fill();
    unread = input_.Unread();
    if (!isMore) break;
    newline = unread.find('\n', searched);
  }

  if (std::min(newline, unread.size()) > Input::MostOfALine) {
    tooLong_ = ErrorAt(complete_ + 1, behind_ + Input::MostOfALine,
                       "the line is longer than 16 MiB, which that of a fabric never is");
    return false;
  }

  line.hasEnd = newline != std::string_view::npos;
  if (!line.hasEnd && (unread.empty() || input_.GetFailure())) return false;
  line.text = unread.substr(0, newline);
  line.number = complete_ + 1;
  line.offset = behind_;
  if (line.hasEnd) {
    input_.Consume(newline + 1);
    ++complete_;
    behind_ = 0;
  } else {
    input_.Consume(unread.size());
    behind_ += unread.size();
  }
  if (line.text.ends_with('\r')) line.text.remove_suffix(1);
  return true;
}

InputError LineReader::ErrorAtEnd(std::string message) const {
  return ErrorAt(complete_ + 1, behind_ + input_.Unread().size(), std::move(message));
}

MaybeError LineReader::Finish(MaybeError error) {
  for (Line rest; Next(rest);) continue;
  if (tooLong_) return tooLong_;
  const auto& failure = input_.GetFailure();
  if (!failure) return error;
  if (!failure->hasPlace) return ErrorOfFile(failure->message);
  return ErrorAtEnd(failure->message);
}

}  // namespace fabscope::internal
