// A build with the sizes file publishes copies of the photos without where
// they were taken or who took them, names what it could not clean, and
// keeps every source as it was, and a rebuild takes back what it cleaned;
// "metadati tieni" leaves the copies alone.
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>
#include <vips/vips8>

#include "publish/clean_index.h"
#include "tests/support/e2e.h"
#include "tests/support/host_checks.h"

namespace vf::test {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using Snapshot = std::map<std::string, std::string>;

const std::string kAll = "Artist OwnerName SerialNumber [GPS] [IPTC] [XMP";

std::string UserName() {
  const passwd* user = ::getpwuid(::getuid());
  return user ? user->pw_name : "nessuno";
}

// The sources in list order: what exiftool writes into them (the user's own
// name among all the rest, or only a serial number), and the tags it finds.
const std::string kAllAndUser = kIdentifyingTags + " -Artist=" + UserName();
const struct {
  std::string name, exif, tags;
} kPhotos[] = {
    {"a.jpg", kAllAndUser, kAll},
    {"b.jpg", "-SerialNumber=SN4711", "SerialNumber"},
    {"plain.jpg", "", ""},  // libvips' own EXIF, which places nothing
    {"p.png", kAllAndUser, "Artist Author OwnerName SerialNumber [GPS] [IPTC] [XMP"},
    {"t.tif", kAllAndUser, kAll},
    {"testo.jpg", "", ""},
};

// The scan of a JPEG, from its SOS segment, found by walking the segments,
// to its EOI.
std::string Scan(const std::string& jpeg) {
  for (size_t at = 2; at + 4 <= jpeg.size() && jpeg[at] == '\xFF';) {
    if (jpeg[at + 1] == '\xDA') return jpeg.substr(at, jpeg.rfind("\xFF\xD9") + 2 - at);
    at += 2 + (static_cast<unsigned char>(jpeg[at + 2]) << 8 |
               static_cast<unsigned char>(jpeg[at + 3]));
  }
  return "<no scan>";
}

bool SamePixels(const fs::path& a, const fs::path& b) {
  const vips::VImage one = vips::VImage::new_from_file(a.c_str());
  const vips::VImage two = vips::VImage::new_from_file(b.c_str());
  return one.width() == two.width() && one.height() == two.height() && (one - two).abs().max() == 0;
}

// The real template set with its sizes file (plus `setting`), and the
// photos of kPhotos in c/Foto, tagged with the user's name among others.
struct Photos : TempTree {
  explicit Photos(const std::string& setting = "") {
    CopyTemplates(*this, "c/PROG", true);
    Write("c/PROG/DIMENSIONI.TXT", Read("c/PROG/DIMENSIONI.TXT") + setting);
    MakeFolder("c/Foto");
    MakeFolder("c/Sito");
    const vips::VImage grain =
        (Painted(96, 64, kOrange) +
         vips::VImage::gaussnoise(96, 64, vips::VImage::option()->set("sigma", 20.0)))
            .cast(VIPS_FORMAT_UCHAR);
    for (const auto& photo : kPhotos) {
      const std::string path = Path("c/Foto/" + photo.name).string();
      if (photo.name == "testo.jpg") {
        Write("c/Foto/testo.jpg", "non è una foto, ma dice dove: Via Roma 1");
        continue;
      }
      grain.write_to_file(path.c_str());
      if (!photo.exif.empty()) {
        Output("exiftool -q -q -overwrite_original " + photo.exif + " '" + path + "'");
      }
    }
  }
  // `answers` go before the build's click ("answer yes" for a site that is
  // there already).
  RunResult Build(const std::string& answers = "") const {
    std::string script = "drive C c\nprogram C:\\PROG\nstart\n";
    for (const auto& photo : kPhotos) script += "add C:\\Foto\\" + photo.name + "\n";
    RunResult r =
        RunScript(script + "set txtNUM_FILE 6\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\n" +
                      answers + "click Command1\n",
                  root());
    EXPECT_EQ(r.status, 0) << r.err;
    return r;
  }
  Snapshot Sources() const {
    Snapshot shot;
    for (const auto& photo : kPhotos) shot[photo.name] = Read("c/Foto/" + photo.name);
    return shot;
  }
  // The album copy of the i-th photo.
  std::string Copy(size_t i) const {
    return "c/Sito/dir_0001/img_00" + std::to_string(i + 1) +
           fs::path(kPhotos[i].name).extension().string();
  }
};

TEST(PublishedMetadata, CopiesLoseWhereAndWhoKeepTheirPictureAndTheRestIsNamed) {
  Photos tree;
  for (const auto& photo : kPhotos) {
    EXPECT_EQ(IdentifyingTags(tree.Path("c/Foto/" + photo.name)), photo.tags) << photo.name;
  }
  const Snapshot sources = tree.Sources();
  const RunResult r = tree.Build();
  EXPECT_EQ(r.Messages(),
            (Texts{"Immagini non riducibili, copiate come sono:{CR}C:\\Foto\\testo.jpg - non è "
                   "un'immagine",
                   "Dalle copie pubblicate sono stati tolti posizione GPS e dati dell'apparecchio "
                   "di 3 immagini.{CR}{CR}Queste foto sono state scritte di nuovo senza i loro "
                   "dati:{CR}C:\\Foto\\t.tif{CR}{CR}Queste foto sono pubblicate con i loro dati, "
                   "posizione compresa:{CR}C:\\Foto\\testo.jpg"}));
  EXPECT_EQ(tree.Sources(), sources);
  // No published picture tells where or who, the copies nor their sizes.
  const std::map<std::string, std::string> published = IdentifyingTagsIn(tree.Path("c/Sito"));
  EXPECT_GE(published.size(), 3 * std::size(kPhotos));
  for (const auto& [name, tags] : published) EXPECT_EQ(tags, "") << name;
  // A cleaned JPEG is its source's scan, byte for byte, and stands as it did.
  for (size_t i : {0, 1, 2}) {
    SCOPED_TRACE(kPhotos[i].name);
    const std::string copy = tree.Read(tree.Copy(i));
    EXPECT_NE(copy, sources.at(kPhotos[i].name));
    EXPECT_EQ(Scan(copy), Scan(sources.at(kPhotos[i].name)));
    EXPECT_TRUE(SamePixels(tree.Path(tree.Copy(i)), tree.Path("c/Foto/" + kPhotos[i].name)));
    const vips::VImage standing = vips::VImage::new_from_file(tree.Path(tree.Copy(i)).c_str());
    EXPECT_EQ(standing.get_typeof("orientation") ? standing.get_int("orientation") : 1,
              i == 0 ? 6 : 1);
  }
  EXPECT_TRUE(SamePixels(tree.Path(tree.Copy(3)), tree.Path("c/Foto/p.png")));
  EXPECT_EQ(tree.Read(tree.Copy(5)), sources.at("testo.jpg"));
  // Nothing in the site names the photos' folder or the user, the record
  // of the derived pictures included.
  const std::string site = tree.Path("c/Sito").string();
  EXPECT_EQ(Output("grep -rli -e '" + tree.Path("c/Foto").string() + "' -e '" + UserName() + "' '" +
                   site + "'"),
            "");
}

TEST(PublishedMetadata, ARebuildTakesBackTheCleanCopiesAndSaysTheSame) {
  Photos tree;
  const RunResult first = tree.Build();
  // Each copy held open, so that its inode goes to no other file meanwhile.
  std::vector<std::pair<std::ifstream, ino_t>> made;
  for (size_t i = 0; i < std::size(kPhotos); ++i) {
    made.emplace_back(std::ifstream(tree.Path(tree.Copy(i))),
                      StampOf(tree.Path(tree.Copy(i))).first);
  }
  const RunResult again = tree.Build("answer yes\n");
  EXPECT_EQ(again.Messages(), first.Messages());
  // The clean copies are the files the first build wrote; the text is the
  // build's fresh copy.
  for (size_t i = 0; i < std::size(kPhotos); ++i) {
    EXPECT_EQ(StampOf(tree.Path(tree.Copy(i))).first == made[i].second,
              kPhotos[i].name != "testo.jpg")
        << kPhotos[i].name;
  }
  // They are kept in the user's cache, where only the user looks.
  const fs::path store = fs::path(std::getenv("XDG_CACHE_HOME")) / "vetrina-foto" / "pulite" /
                         PathDigest(tree.Path("c/Sito").string());
  struct stat st {};
  EXPECT_EQ(::stat(store.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(PublishedMetadata, TheSettingKeepsTheCopiesAsTheirSources) {
  Photos tree("metadati tieni\r\n");
  const RunResult r = tree.Build();
  EXPECT_EQ(r.Messages(),
            Texts{"Immagini non riducibili, copiate come sono:{CR}C:\\Foto\\testo.jpg "
                  "- non è un'immagine"});
  for (size_t i = 0; i < std::size(kPhotos); ++i) {
    EXPECT_EQ(tree.Read(tree.Copy(i)), tree.Read("c/Foto/" + kPhotos[i].name));
    EXPECT_EQ(IdentifyingTags(tree.Path(tree.Copy(i))), kPhotos[i].tags);
  }
}

}  // namespace
}  // namespace vf::test
