// write_manual FOLDER: writes the manual pages and the completions there.

#include <fstream>
#include <iostream>
#include <string>

#include "cli/commands.h"
#include "manual/completions.h"
#include "manual/man_page.h"

namespace {

bool Write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (file) return true;
  std::cerr << "write_manual: " << path << ": cannot be written\n";
  return false;
}

bool WriteAll(const std::string& folder) {
  const auto commands = fabscope::internal::CommandTexts();
  bool isWritten = Write(folder + "/fabscope.bash", fabscope::internal::BashCompletion(commands)) &&
                   Write(folder + "/_fabscope", fabscope::internal::ZshCompletion(commands)) &&
                   Write(folder + "/fabscope.fish", fabscope::internal::FishCompletion(commands)) &&
                   Write(folder + "/fabscope.1",
                         fabscope::internal::ManPage(fabscope::internal::toolText, commands));
  for (const fabscope::internal::CommandText* command : commands) {
    const std::string path = folder + "/" + fabscope::internal::PageName(*command) + ".1";
    isWritten = isWritten && Write(path, fabscope::internal::ManPage(*command));
  }
  return isWritten;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return WriteAll(argv[1]) ? 0 : 2;
  std::cerr << "usage: write_manual FOLDER\n";
  return 2;
}
