#ifndef VF_SCRIPT_SCRIPT_RUNNER_H_
#define VF_SCRIPT_SCRIPT_RUNNER_H_

#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "desktop/site_publishing.h"
#include "script/script_ui.h"

namespace vf {

class HostFileSystem;
class FaultInjectingFileSystem;
struct Vetrina;

// Exit statuses of the runner.
enum EsitoScript { kScriptFinito = 0, kScriptErrore = 1, kScriptNonCapito = 2 };

// Runs a script of the runner's language line by line over the program's
// logic and the real file layer, printing every event on `out`. Problems
// are told on `err`.
class ScriptRunner {
 public:
  // `runner_folder` is the host folder of the runner's executable: the
  // default program folder.
  ScriptRunner(std::ostream& out, std::ostream& err, std::string runner_folder);
  ~ScriptRunner();

  int Run(std::istream& in);

 private:
  struct Drive {
    char letter;
    std::string host_folder;
    bool readonly;
  };
  struct Failure {
    std::string path;
    int number;
  };

  // Runs one statement; false when the line is not understood.
  bool Statement(const std::string& line);
  bool SetUp(const std::string& word, const std::string& line);
  bool Start(bool usage);
  bool Set(const std::string& rest);
  bool Print(const std::string& what);
  bool PrintList();
  bool PrintModule1(const std::string& what);
  bool Positions(const std::vector<std::string>& words, bool selected);

  std::ostream& out_;
  std::ostream& err_;
  std::string runner_folder_;
  ScriptUi ui_;
  std::vector<Drive> drives_;
  std::vector<Failure> failures_;
  std::optional<std::string> program_;
  bool started_ = false;
  bool fatal_ = false;  // the runner itself failed (exit status 1)
  std::unique_ptr<HostFileSystem> host_;
  std::unique_ptr<FaultInjectingFileSystem> fs_;
  std::unique_ptr<SitePublishing> publishing_;
  std::unique_ptr<Vetrina> v_;
};

}  // namespace vf

#endif  // VF_SCRIPT_SCRIPT_RUNNER_H_
