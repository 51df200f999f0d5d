#pragma once

#include <cstddef>
#include <fabscope/export.h>
#include <stdexcept>
#include <string>

namespace fabscope {

/// Why an input or an option could not be used, and where. what() is the line that the command
/// prints: "net.topo:12:7: expected a port number".
class FABSCOPE_API Error : public std::runtime_error {
 public:
  Error(const std::string& text, std::string file, std::size_t line, std::size_t column,
        std::string reason);
  Error(const Error& other);
  Error& operator=(const Error& other);
  ~Error() override;

  /// The file as it was named; empty if none is to blame.
  const std::string& File() const { return file_; }
  /// Counted from 1; 0 means the file as a whole.
  std::size_t Line() const { return line_; }
  /// In bytes, counted from 1; 0 where there is no line.
  std::size_t Column() const { return column_; }
  /// what() without the place.
  const std::string& Reason() const { return reason_; }

 private:
  std::string file_;
  std::size_t line_;
  std::size_t column_;
  std::string reason_;
};

}  // namespace fabscope
