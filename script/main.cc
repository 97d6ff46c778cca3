#include <fstream>
#include <iostream>
#include <string>

#include <filesystem>

#include "script/script_runner.h"

// vetrina-foto-script SCRIPT: runs the program's commands from a script with
// no window ("-" or no argument: standard input).
int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  std::error_code ec;
  std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
  std::string folder = ec ? std::filesystem::current_path().string() : self.parent_path().string();
  vf::ScriptRunner runner(std::cout, std::cerr, folder);
  if (argc < 2 || std::string(argv[1]) == "-") return runner.Run(std::cin);
  std::ifstream script(argv[1], std::ios::binary);
  if (!script) {
    std::cerr << "vetrina-foto-script: impossibile leggere " << argv[1] << '\n';
    return vf::kScriptErrore;
  }
  return runner.Run(script);
}
