// Lines of a runner script that hold odd white space, run in process: they
// once read a first word that was not there.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "script/script_runner.h"
#include "tests/support/e2e.h"

namespace vf::test {
namespace {

struct InProcess {
  int status = -1;
  std::string out;
  std::string err;
};

InProcess RunInProcess(const std::string& script, const TempTree& tree) {
  std::istringstream in(script);
  std::ostringstream out;
  std::ostringstream err;
  ScriptRunner runner(out, err, tree.root().string());
  InProcess r;
  r.status = runner.Run(in);
  r.out = out.str();
  r.err = err.str();
  return r;
}

TEST(RunnerLines, WhiteSpaceOnlyLinesAreBlank) {
  TempTree tree;
  tree.MakeFolder("c");
  const std::string drive = "drive C " + tree.Path("c").string() + "\nprogram C:\\\n";
  InProcess r =
      RunInProcess(drive + "\v\n \f \n\t\r\n\v# a comment\nstart\nprint List1.ListCount\n", tree);
  EXPECT_EQ(r.status, kScriptFinito) << r.err;
  EXPECT_EQ(r.out, "List1.ListCount = 0\n");
}

TEST(RunnerLines, DriveLinesSplitByTabsAreRefusedNotRead) {
  TempTree tree;
  // Tabs part the words, but the folder is the text after the second blank:
  // here there is none, so the line names no folder.
  for (std::string line : {"drive\tC\tc ", "drive C\tc ", "drive\tC\tc readonly "}) {
    InProcess r = RunInProcess(line + "\nstart\n", tree);
    EXPECT_EQ(r.status, kScriptNonCapito) << line;
    EXPECT_NE(r.err.find("riga 1 non compresa"), std::string::npos) << r.err;
  }
}

}  // namespace
}  // namespace vf::test
