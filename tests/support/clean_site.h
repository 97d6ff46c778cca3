#ifndef VF_TESTS_SUPPORT_CLEAN_SITE_H_
#define VF_TESTS_SUPPORT_CLEAN_SITE_H_

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>
#include <vips/vips8>

#include "desktop/site_publishing.h"
#include "platform/host_files.h"
#include "publish/clean_copies.h"
#include "publish/clean_index.h"
#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

// What the tests of the store of clean copies share: sites whose copies a
// test cleans and builds again, and the pictures it puts in them.
namespace vf::test {

inline std::string Saved(const vips::VImage& image, const char* suffix) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(suffix, &buffer, &size);
  std::string bytes(static_cast<const char*>(buffer), size);
  g_free(buffer);
  return bytes;
}

// The file a copy is now, held open so that its inode goes to no other file
// while the test compares: the copy is that very file while it has it.
struct Held {
  Held(const TempTree& tree, const CopyRecord& copy)
      : fd(::open(copy.copy.c_str(), O_RDONLY | O_CLOEXEC)),
        inode(StampOf(copy.copy).first),
        bytes(tree.Read(copy.copy)) {}
  bool Is(const CopyRecord& copy) const { return fd.valid() && StampOf(copy.copy).first == inode; }

  Fd fd;
  ino_t inode;
  std::string bytes;  // what the file held then
};

// The picture with a position, a serial number and names (kIdentifyingTags)
// written into it by exiftool.
inline std::string Tagged(const std::string& name, const std::string& bytes) {
  const TempTree tree;
  tree.Write(name, bytes);
  Output("exiftool -q -m -overwrite_original " + kIdentifyingTags + " '" +
         tree.Path(name).string() + "'");
  std::string tagged = tree.Read(name);
  EXPECT_NE(tagged.find("SN4711"), std::string::npos);
  return tagged;
}

// A BMP of two pixels: its size, the size of its header, its pixels.
inline const std::string kBmp =
    std::string("BM\x3E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\1\0\0\0\1\0\x18\0", 30) +
    std::string(24, '\0') + std::string(8, '\xFF');

// Sources in src/, their sites' album copies in SITE/dir_0001/, the stores
// in cache/pulite.
struct Site : TempTree {
  std::string stores = Path("cache/pulite").string();

  // src/NAME and its byte copy in the album folder of `site`.
  CopyRecord Add(const std::string& name, const std::string& bytes,
                 const std::string& site = "site") const {
    Write("src/" + name, bytes);
    const CopyRecord copy{Path("src/" + name).string(), Path(site + "/dir_0001/" + name).string()};
    MakeFolder(site + "/dir_0001");
    Recopy(copy);
    return copy;
  }
  // What every build does: a fresh byte copy of the source, renamed over
  // the copy (CopyHostFile never writes through a name).
  static void Recopy(const CopyRecord& copy) {
    Fd in;
    EXPECT_EQ(OpenHostInput(copy.source, &in), 0);
    EXPECT_EQ(CopyHostFile(in.get(), copy.copy), 0);
  }
  CleanOutcome Clean(const std::vector<CopyRecord>& copies) const {
    return CleanCopies(copies, 2, stores);
  }
  // True when the copy is there and holds nothing of kIdentifyingTags'
  // serial number, which stands in plain text wherever exiftool wrote it.
  bool Safe(const CopyRecord& copy) const {
    const std::string bytes = Read(copy.copy);
    return bytes != "<missing>" && bytes.find("SN4711") == std::string::npos;
  }
  // The store of a site folder, and the stored file of a copy.
  std::string Store(const std::string& site = "site") const {
    return stores + "/" + PathDigest(Path(site).string());
  }
  std::string Stored(const CopyRecord& copy, const std::string& site = "site") const {
    return Store(site) + "/" + PathDigest(copy.copy);
  }
};

inline std::string Message(const CleanOutcome& outcome) {
  return CleanMessage(outcome, [](const std::string& path) { return path; });
}

inline const std::string kOneIdentifying =
    "Dalle copie pubblicate sono stati tolti posizione GPS e dati dell'apparecchio di 1 immagine.";

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_CLEAN_SITE_H_
