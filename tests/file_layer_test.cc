// The file layer's text-file slots, and the exact disk operations of a
// build, on the file layer over a temporary tree.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "commands/creazione_index.h"
#include "platform/failure.h"
#include "platform/text_slots.h"
#include "script/fault_injection.h"
#include "tests/support/banco.h"

namespace vf {
namespace {

using Lines = std::vector<std::string>;

// A disk whose files give these chunks, one a read, and then nothing more;
// a number instead of bytes is a read that fails with it.
struct Chunk {
  Chunk(const char* bytes) : bytes(bytes) {}
  Chunk(std::string bytes) : bytes(std::move(bytes)) {}
  Chunk(int failure) : failure(failure) {}
  std::string bytes;
  int failure = kOk;
};
struct ChunkedReads : TempTreeFileSystem {
  struct File : InputFile {
    std::vector<Chunk> chunks;
    size_t next = 0;
    int Read(char* buffer, size_t capacity, size_t* got) override {
      *got = 0;
      if (next == chunks.size()) return kOk;
      const Chunk& c = chunks[next++];
      *got = c.bytes.copy(buffer, capacity);
      return c.failure;
    }
  };
  int ReadFile(const Place&, std::unique_ptr<InputFile>* out) override {
    auto file = std::make_unique<File>();
    file->chunks = chunks;
    *out = std::move(file);
    return kOk;
  }
  std::vector<Chunk> chunks;
};

Lines Read(std::vector<Chunk> chunks) {
  ChunkedReads fs;
  fs.AddFile("C:\\t.txt", "");
  fs.chunks = std::move(chunks);
  TextSlots slots(fs);
  EXPECT_EQ(slots.OpenForReading(3, "C:\\t.txt"), kOk);
  Lines lines;
  std::string line = "not yet read";
  while (!slots.AtEnd(3) && slots.ReadLine(3, &line) == kOk) lines.push_back(line);
  EXPECT_TRUE(slots.AtEnd(3));
  EXPECT_EQ(slots.ReadLine(3, &line), kErroreAccesso);  // past the end
  return lines;
}

TEST(FileLayer, TextSlots) {
  // A failure is given with its own number, and then the file has ended.
  ChunkedReads broken;
  broken.AddFile("C:\\t.txt", "");
  broken.chunks = {kDiscoPieno, "late"};
  TextSlots failing(broken);
  ASSERT_EQ(failing.OpenForReading(2, "C:\\t.txt"), kOk);
  std::string text;
  EXPECT_EQ(failing.ReadLine(2, &text), kDiscoPieno);
  EXPECT_TRUE(failing.AtEnd(2));

  EXPECT_EQ(Read({"a\r\nb\r\n"}), (Lines{"a", "b"}));
  EXPECT_EQ(Read({"a\rb\n c\r\n\r\nlast"}), (Lines{"a", "b\n c", "", "last"}));
  EXPECT_EQ(Read({std::string("\0\xE0\r\n", 4)}), (Lines{std::string("\0\xE0", 2)}));
  EXPECT_EQ(Read({"\r"}), (Lines{""}));
  EXPECT_EQ(Read({""}), Lines{});
  // Lines and CR LF split across reads; the end stays the end.
  EXPECT_EQ(Read({"a\r", "\nb", "c\r", "d"}), (Lines{"a", "bc", "d"}));
  EXPECT_EQ(Read({"a\r\n", "", "late\r\n"}), (Lines{"a"}));

  TempTreeFileSystem fs;
  fs.AddFile("C:\\T\\IMG_001.HTM", "template\r\n");
  TextSlots slots(fs);
  std::string line;
  EXPECT_EQ(slots.ReadLine(1, &line), kNomeNonValido);
  EXPECT_EQ(slots.WriteLine(1, "x"), kNomeNonValido);
  EXPECT_TRUE(slots.AtEnd(1));
  EXPECT_EQ(slots.Close(1), kOk);
  ASSERT_EQ(slots.OpenForWriting(1, "C:\\page.htm"), kOk);
  EXPECT_EQ(slots.ReadLine(1, &line), kNomeNonValido);
  EXPECT_EQ(slots.WriteLine(1, "<p>\n") + slots.WriteLine(1, ""), kOk);
  EXPECT_EQ(slots.Close(1), kOk);
  EXPECT_EQ(fs.Contents("C:\\page.htm"), "<p>\n\r\n\r\n");
  EXPECT_EQ(slots.OpenForReading(2, "C:\\missing.htm"), kFileNonTrovato);
  EXPECT_EQ(slots.ReadLine(2, &line), kNomeNonValido);
  // A file open in another slot, by any spelling, is not emptied.
  ASSERT_EQ(slots.OpenForReading(3, "C:\\T\\IMG_001.HTM"), kOk);
  EXPECT_EQ(slots.OpenForWriting(4, "c:\\t\\.\\img_001.htm"), kErroreAccesso);
  ASSERT_EQ(slots.OpenForWriting(1, "C:\\T\\index.htm"), kOk);
  EXPECT_EQ(slots.OpenForWriting(4, "C:\\T\\INDEX.HTM"), kErroreAccesso);
  EXPECT_EQ(slots.ReadLine(3, &line), kOk);
  EXPECT_EQ(line, "template");
  // Its own slot is closed first, and a closed file is free again.
  EXPECT_EQ(slots.OpenForWriting(1, "C:\\T\\index.htm"), kOk);
  EXPECT_EQ(slots.Close(3), kOk);
  EXPECT_EQ(slots.OpenForWriting(4, "C:\\T\\IMG_001.HTM"), kOk);
  // Lines handed over are on the disk before the close; only a slot open for
  // writing is flushed.
  EXPECT_EQ(slots.WriteLine(4, "uno") + slots.Flush(4), kOk);
  EXPECT_EQ(fs.Contents("C:\\T\\IMG_001.HTM"), "uno\r\n");
  EXPECT_EQ(slots.Flush(7), kNomeNonValido);
  // Opening a slot again closes what it held: the page written is whole, and a
  // file read again starts from its beginning.
  fs.AddFile("C:\\two.txt", "1\r\n2\r\n");
  ASSERT_EQ(slots.OpenForWriting(5, "C:\\five.htm") + slots.WriteLine(5, "five"), kOk);
  ASSERT_EQ(slots.OpenForReading(5, "C:\\two.txt") + slots.ReadLine(5, &line), kOk);
  EXPECT_EQ(slots.Flush(5), kNomeNonValido);
  EXPECT_EQ(fs.Contents("C:\\five.htm"), "five\r\n");
  ASSERT_EQ(slots.OpenForReading(5, "C:\\two.txt") + slots.ReadLine(5, &line), kOk);
  EXPECT_EQ(line, "1");
}

// A failure injected where a path names the same place, by any spelling; the
// first rule's number wins, and a rule for no place or for no failure is none.
TEST(FileLayer, InjectedFailures) {
  TempTreeFileSystem disk;
  disk.AddFile("C:\\a.htm", "a");
  FaultInjectingFileSystem fs(disk);
  fs.AddFailure("C:\\b?.htm", kErroreAccesso);
  fs.AddFailure("c:\\.\\B.HTM", kOk);
  fs.AddFailure("C:\\b.htm", kDiscoPieno);
  fs.AddFailure("C:\\B.htm", kErroreAccesso);
  std::unique_ptr<OutputFile> file;
  EXPECT_EQ(fs.Copy("C:\\a.htm", "C:\\B.HTM") + fs.MakeFolder("c:\\b.htm") +
                fs.Rename("C:\\a.htm", "C:\\b.htm") + fs.OpenOutput("C:\\x?.htm", &file),
            3 * kDiscoPieno + kNomeNonValido);
  EXPECT_EQ(fs.OpenOutput("C:\\c.htm", &file), kOk);
}

TEST(FileLayer, ABuildDoesExactlyItsOperationsInOrder) {
  test::Banco b;
  b.ui.program_folder = "C:\\P";
  for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM", "puls_sx3.jpg"})
    b.fs.AddFile(std::string("C:\\P\\") + f, "x\r\n");
  b.fs.AddFile("C:\\P\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_001.HTM",
               "<img src=\"img_001.jpg\">\r\n");
  b.fs.AddFile("C:\\F\\A.JPG", "picture");
  b.fs.AddFolder("C:\\S");
  b.v.frmALBUM.List1.AddItem("C:\\F\\A.JPG");
  b.v.frmALBUM.txtNUM_FILE.Text = "1";
  b.v.frmALBUM.txtNOME_FILE_HTM.Text = "C:\\S\\index.htm";
  Command1_Click(b.v);
  EXPECT_EQ(b.fs.log(),
            (Lines{"WRITE C:\\s\\index.htm", "RENAME C:\\F\\A.JPG -> C:\\f\\a.jpg",
                   "MKDIR C:\\s\\dir_0001", "COPY C:\\f\\a.jpg -> C:\\s\\dir_0001\\img_001.jpg",
                   "WRITE C:\\s\\dir_0001\\img_001.htm",
                   "COPY C:\\P\\puls_sx3.jpg -> C:\\s\\dir_0001\\puls_sx3.jpg",
                   "WRITE C:\\s\\dir_0001\\menu.htm",
                   // The site files that are there; the missing ones leave no trace.
                   "COPY C:\\P\\INTESTAZ.HTM -> C:\\s\\intestaz.htm",
                   "COPY C:\\P\\PIEDE.HTM -> C:\\s\\piede.htm"}));
  EXPECT_EQ(b.fs.Contents("c:\\s\\dir_0001\\img_001.htm"), "<img src=\"img_001.jpg\">\r\n");
  EXPECT_EQ(b.fs.Contents("C:\\S\\DIR_0001\\IMG_001.JPG"), "picture");
  // Four missing album pictures, one message each, and nothing else.
  int messages = 0;
  for (const std::string& e : b.ui.events) messages += e.starts_with("MSG: ");
  EXPECT_EQ(messages, 4);
  // Every slot is closed again: no template stays open, and no page waits
  // unwritten in its buffer; nor after a second build that a No to the page
  // that is there now ends.
  b.Eventi();
  Command1_Click(b.v);
  EXPECT_EQ(b.Eventi().substr(0, 70),
            "BEEP|ASK: Elenco  c:\\s\\index.htm  gia' esistente, continuo (S/N) -> NO");
  std::string line;
  for (int slot = 1; slot <= 4; ++slot) {
    EXPECT_EQ(b.v.slots.ReadLine(slot, &line) + b.v.slots.WriteLine(slot, ""), 2 * kNomeNonValido)
        << slot;
  }
  // The build makes the page's drive current even when its folder is
  // missing, so an entry without a folder is taken from that drive, also
  // after the page has moved to C:\index.htm, and after an entry with one.
  b.fs.AddFile("D:\\b.jpg", "b");
  b.v.frmALBUM.List1.Assign({"C:\\F\\a.jpg", "b.jpg"});
  b.v.frmALBUM.txtNOME_FILE_HTM.Text = "D:\\Manca\\index.htm";
  Command1_Click(b.v);
  EXPECT_EQ(b.fs.Contents("C:\\dir_0001\\img_001.jpg"), "picture");
  EXPECT_EQ(b.fs.Contents("C:\\dir_0001\\img_002.jpg"), "b");
  // Each build hands its album copies over once, as it made them, and the
  // index page where it ended up.
  Lines handed;
  for (const BuiltSite& site : b.publishing.handed) {
    handed.push_back(site.capitals ? "MAIUSCOLE" : "minuscole");
    for (const std::string& page : site.index_pages) handed.push_back("page " + page);
    for (const AlbumCopy& c : site.copies) {
      handed.push_back(c.source + " > " + c.copy + " " + std::to_string(c.album) + "/" +
                       std::to_string(c.place));
    }
  }
  EXPECT_EQ(handed,
            (Lines{"minuscole", "page c:\\s\\index.htm",
                   "c:\\f\\a.jpg > c:\\s\\dir_0001\\img_001.jpg 1/1", "minuscole", "minuscole",
                   "page C:\\index.htm", "c:\\f\\a.jpg > c:\\dir_0001\\img_001.jpg 1/1",
                   "b.jpg > c:\\dir_0001\\img_002.jpg 1/2"}));
}

// A disk that is full, or fills, during a build: the page's first lines are
// handed over while its recovery watches, a picture page that fails only at
// its close is told like one that fails at its opening, and so is a missing
// picture-page template.
TEST(FileLayer, AFullDiskIsToldWhereTheBuildWatchesIt) {
  const struct {
    size_t free;
    bool template_there;
    const char* message;  // the first message of the build
  } rows[] = {
      {0, true, "MSG: Errore in registrazione Elenco c:\\s\\index.htm\r\r ERR= 61 - Disco pieno"},
      {5000, true, "MSG: Errore nella copia singoli HTML ERR= 61 - Disco pieno\r\rCopia "},
      {100000, false, "MSG: Errore nella copia singoli HTML ERR= 53 - Impossibile trovare il file"},
  };
  for (const auto& r : rows) {
    test::Banco b;
    b.ui.program_folder = "C:\\P";
    for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM"})
      b.fs.AddFile(std::string("C:\\P\\") + f, "x\r\n");
    b.fs.AddFile(std::string("C:\\P\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_00") +
                     (r.template_there ? "1" : "2") + ".HTM",
                 std::string(10000, 'p') + "\r\n");
    b.fs.AddFile("C:\\F\\A.JPG", "picture");
    b.fs.AddFile("C:\\S\\index.htm", "the good page of before");
    b.v.frmALBUM.List1.AddItem("C:\\F\\A.JPG");
    b.v.frmALBUM.txtNUM_FILE.Text = "1";
    b.v.frmALBUM.txtNOME_FILE_HTM.Text = "C:\\S\\index.htm";
    b.ui.answers = {true};
    b.fs.free_bytes = r.free;
    Command1_Click(b.v);
    std::string first;
    for (const std::string& e : b.ui.events) {
      if (first.empty() && e.starts_with("MSG: ")) first = e;
    }
    EXPECT_TRUE(first.starts_with(r.message)) << first;
  }
}

}  // namespace
}  // namespace vf
