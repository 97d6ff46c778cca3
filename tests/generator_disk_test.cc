// Which disk operations a build does, on the in-memory file system.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "commands/creazione_index.h"
#include "tests/support/memory_file_system.h"
#include "shell/avvio.h"
#include "shell/vetrina.h"
#include "tests/support/recording_ui.h"

namespace vf {
namespace {

TEST(GeneratorDisk, OneAlbumBuildDoesExactlyItsOperationsInOrder) {
  MemoryFileSystem fs;
  fs.AddDrive('C');
  for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM", "puls_sx3.jpg"}) {
    fs.AddFile(std::string("C:\\P\\") + f, "x\r\n");
  }
  fs.AddFile("C:\\P\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_001.HTM", "<img src=\"img_001.jpg\">\r\n");
  fs.AddFile("C:\\F\\A.JPG", "picture");
  fs.AddFolder("C:\\S");
  test::RecordingUi ui;
  ui.program_folder = "C:\\P";
  Vetrina v(fs, ui);
  Main(v);
  v.frmALBUM.List1.AddItem("C:\\F\\A.JPG");
  v.frmALBUM.txtNUM_FILE.Text = "1";
  v.frmALBUM.txtNOME_FILE_HTM.Text = "C:\\S\\index.htm";
  Command1_Click(v);

  std::vector<std::string> expected = {
      "RENAME C:\\F\\A.JPG -> C:\\f\\a.jpg", "MKDIR C:\\s\\dir_0001",
      "COPY C:\\f\\a.jpg -> C:\\s\\dir_0001\\img_001.jpg", "WRITE C:\\s\\dir_0001\\img_001.htm",
      "COPY C:\\P\\puls_sx3.jpg -> C:\\s\\dir_0001\\puls_sx3.jpg",
      "WRITE C:\\s\\dir_0001\\menu.htm", "WRITE C:\\s\\index.htm",
      // The site files that are there; the missing ones leave no trace.
      "COPY C:\\P\\INTESTAZ.HTM -> C:\\s\\intestaz.htm",
      "COPY C:\\P\\PIEDE.HTM -> C:\\s\\piede.htm"};
  EXPECT_EQ(fs.log(), expected);
  EXPECT_EQ(*fs.Contents("c:\\s\\dir_0001\\img_001.htm"), "<img src=\"img_001.jpg\">\r\n");
  EXPECT_EQ(*fs.Contents("C:\\S\\DIR_0001\\IMG_001.JPG"), "picture");
  // Four missing album pictures, one message each; no other message.
  int messages = 0;
  for (const std::string& e : ui.events) messages += e.rfind("MSG: ", 0) == 0;
  EXPECT_EQ(messages, 4);
}

}  // namespace
}  // namespace vf
