#include "publish/derived_pictures.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vips/vips8>

#include "platform/case_fold.h"
#include "publish/derived_memory.h"
#include "publish/derived_record.h"
#include "platform/failure.h"
#include "platform/host_files.h"
#include "publish/metadata_sift.h"

namespace vf {
namespace {

namespace fs = std::filesystem;

constexpr int kJpegQuality = 82;
constexpr int kWebpQuality = 80;
// Decoders that read line by line keep little in memory whatever the size,
// so only time bounds them; the others hold the whole picture (a GIF costs
// about 9 bytes a pixel), so two of them at once must stay well inside a
// small machine's memory.
constexpr int64_t kMaxStreamedPixels = int64_t{1} << 30;
constexpr int64_t kMaxWholePixels = 100'000'000;
// What the whole-picture decoders hold beyond the decoded pixels: a GIF is
// decoded into a canvas and a frame, a BMP goes through ImageMagick's own
// 16-bit copy before libvips gets it.
constexpr int64_t kWholeFactor = 2;
constexpr int64_t kBmpFactor = 5;

enum class Kind { kJpeg, kPng, kGif, kWebp, kTiff, kBmp };

std::string_view Extension(std::string_view path) {
  size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return {};
  return path.substr(dot + 1);
}

// The kind of picture the decoder vips picked reads; none for anything else,
// so that no other decoder (PDF, SVG, ImageMagick's many) ever sees a file
// that only claims to be a picture.
std::optional<Kind> KindOfLoader(std::string_view loader) {
  auto is = [loader](std::string_view prefix) { return loader.starts_with(prefix); };
  if (is("VipsForeignLoadJpeg")) return Kind::kJpeg;
  if (is("VipsForeignLoadPng")) return Kind::kPng;
  if (is("VipsForeignLoadNsgif") || is("VipsForeignLoadGif")) return Kind::kGif;
  if (is("VipsForeignLoadWebp")) return Kind::kWebp;
  if (is("VipsForeignLoadTiff")) return Kind::kTiff;
  return std::nullopt;
}

// The kind of picture a file's first bytes announce, whether or not the
// rest can be read.
std::optional<Kind> KindOfStart(std::string_view start) {
  if (start.starts_with("\xFF\xD8\xFF")) return Kind::kJpeg;
  if (start.starts_with("\x89PNG\r\n\x1A\n")) return Kind::kPng;
  if (start.starts_with("GIF8")) return Kind::kGif;
  if (start.starts_with("RIFF") && start.size() >= 12 && start.substr(8, 4) == "WEBP") {
    return Kind::kWebp;
  }
  if (start.starts_with("II*") || start.starts_with("MM\0*")) return Kind::kTiff;
  if (start.starts_with("BM")) return Kind::kBmp;
  return std::nullopt;
}

uint32_t Little32(std::string_view bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

uint32_t Big32(std::string_view bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// True when a picture of `kind` that its decoder refused ends before its
// format's end: it lacks the end mark that a whole one has, or is shorter
// than its header says. Only the file is asked: libvips' error text is
// shared by all threads, and another worker may have cleared it.
bool LooksCut(int fd, Kind kind) {
  struct stat st;
  if (::fstat(fd, &st) != 0) return false;
  const off_t size = st.st_size, tail_size = std::min<off_t>(size, 4096);
  std::string head(16, '\0'), tail(static_cast<size_t>(tail_size), '\0');
  if (::pread(fd, head.data(), head.size(), 0) != static_cast<ssize_t>(head.size()) ||
      ::pread(fd, tail.data(), tail.size(), size - tail_size) != tail_size) {
    return true;  // shorter than any header
  }
  switch (kind) {
    case Kind::kJpeg:  // the scan's data cannot hold FF D9, the end mark
      return tail.find("\xFF\xD9") == std::string::npos;
    case Kind::kPng:
      return tail.find("IEND") == std::string::npos;
    case Kind::kGif:
      return tail.back() != ';';
    case Kind::kWebp:
      return int64_t{Little32(head, 4)} + 8 > size;
    case Kind::kBmp:
      return int64_t{Little32(head, 2)} > size;
    case Kind::kTiff:  // the first directory past the end
      return int64_t{head[0] == 'I' ? Little32(head, 4) : Big32(head, 4)} + 2 > size;
  }
  return false;
}

// One source picture opened for scaling to any number of sizes. Every
// failure of libvips ends as "cannot be scaled", with a cause in a few
// Italian words: no exception leaves, and libvips' own text stays out.
class SourcePicture {
 public:
  // False when the picture cannot be scaled: not a kind that is derived,
  // unreadable, or too large to decode safely. `fd` stays the caller's.
  bool Open(int fd, const std::string& path) {
    char first[16] = {};
    const ssize_t got = ::pread(fd, first, sizeof first, 0);
    const std::optional<Kind> announced =
        KindOfStart(std::string_view(first, got > 0 ? static_cast<size_t>(got) : 0));
    try {
      path_ = path;
      fd_ = fd;
      source_ = vips::VSource::new_from_descriptor(fd);
      const char* loader = vips_foreign_find_load_source(source_->get_source());
      std::optional<Kind> kind = loader ? KindOfLoader(loader) : std::nullopt;
      // ImageMagick reads BMP, and only from a file; it is trusted with
      // nothing but what starts as a BMP does.
      if (!kind && announced == Kind::kBmp) kind = Kind::kBmp;
      if (!kind) {
        vips_error_clear();
        if (announced) return Damaged(*announced);
        cause_ = loader ? "formato non gestito" : "non è un'immagine";
        return false;
      }
      kind_ = *kind;
      vips::VImage header =
          kind_ == Kind::kBmp
              ? vips::VImage::new_from_file(
                    path_.c_str(), vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL))
              : vips::VImage::new_from_source(
                    *source_, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
      whole_factor_ = kind_ == Kind::kBmp ? kBmpFactor : kWholeFactor;
      if ((kind_ == Kind::kJpeg && !Flag(header, "jpeg-multiscan")) ||
          (kind_ == Kind::kPng && !Flag(header, "interlaced")) || kind_ == Kind::kWebp) {
        whole_factor_ = 1;
      }
      width_ = header.width();
      height_ = header.height();
      bands_ = header.bands();
      band_bytes_ = static_cast<int>(vips_format_sizeof(header.format()));
      if (width_ * height_ > (whole_factor_ == 1 ? kMaxStreamedPixels : kMaxWholePixels)) {
        cause_ = "troppo grande: " + std::to_string(width_) + "×" + std::to_string(height_);
        return false;
      }
      to_srgb_ = header.get_typeof(VIPS_META_ICC_NAME) != 0 ||
                 header.interpretation() == VIPS_INTERPRETATION_CMYK;
      return true;
    } catch (const std::exception&) {
      vips_error_clear();
      return Damaged(announced.value_or(kind_));
    }
  }

  // Why the picture could not be scaled, once Open or Scale failed.
  const std::string& cause() const { return cause_; }

  // The decoded memory that scaling costs at most: the decoded source (all
  // of it where the decoder holds the whole picture), and the scaled
  // picture kept for the smaller sizes when `keeps`.
  int64_t Cost(int largest, bool keeps) const {
    int64_t cost = width_ * height_ * bands_ * band_bytes_ * whole_factor_;
    if (keeps) {
      const int64_t longest = std::max<int64_t>({width_, height_, 1});
      const int64_t scale = std::min<int64_t>(largest, longest);
      cost +=
          (width_ * scale / longest + 1) * (height_ * scale / longest + 1) * bands_ * band_bytes_;
    }
    return cost;
  }

  // The picture scaled to fit `pixels` and saved, or nothing when it cannot
  // be. The first call decodes the source, at the least scale that serves;
  // with `again` it keeps the result in memory and later calls, for sizes no
  // larger, scale that down instead: decoding a camera JPEG costs more than
  // all the rest, at any scale.
  std::optional<std::string> Scale(int pixels, bool again) {
    try {
      vips::VImage image;
      if (decoded_) {
        image = decoded_->thumbnail_image(
            pixels, vips::VImage::option()->set("height", pixels)->set("size", VIPS_SIZE_DOWN));
      } else {
        image = Decode(pixels);
        if (again) {
          image = image.copy_memory();
          decoded_ = image;
        }
      }
      bool jpeg = kind_ == Kind::kJpeg || kind_ == Kind::kTiff || kind_ == Kind::kBmp;
      if (jpeg) image = ForJpeg(image);
      std::optional<std::string> saved = Save(image, jpeg);
      if (!saved) cause_ = "riduzione non riuscita";
      return saved;
    } catch (const std::exception&) {
      vips_error_clear();
      Damaged(kind_);
      return std::nullopt;
    }
  }

 private:
  // The source scaled to fit `pixels`, upright, in sRGB and with no
  // metadata, so that scaling it again neither turns nor converts it twice.
  vips::VImage Decode(int pixels) const {
    vips::VOption* options = vips::VImage::option()
                                 ->set("height", pixels)
                                 ->set("size", VIPS_SIZE_DOWN)
                                 ->set("fail_on", VIPS_FAIL_ON_ERROR);
    // A picture with its own profile (or CMYK) is turned into sRGB, what a
    // page takes a picture without a profile to be; the others are sRGB
    // already. So no profile is kept: sRGB's would weigh more than a small
    // picture.
    if (to_srgb_) options->set("export_profile", "srgb");
    // Some libvips versions pass `fail_on` to no decoder but a file's, so a
    // source's decoder is also told through its option string.
    if (kind_ != Kind::kBmp) options->set("option_string", "fail_on=error");
    vips::VImage image = kind_ == Kind::kBmp
                             ? vips::VImage::thumbnail(path_.c_str(), pixels, options)
                             : vips::VImage::thumbnail_source(*source_, pixels, options);
    return WithoutMetadata(image);
  }

  static bool Flag(const vips::VImage& image, const char* field) {
    return image.get_typeof(field) != 0 && image.get_int(field) != 0;
  }

  // JPEG keeps 8 bits and no transparency: a deeper picture is brought to
  // 8 bits and a transparent one laid on white, as a page would show it.
  static vips::VImage ForJpeg(vips::VImage image) {
    if (image.format() != VIPS_FORMAT_UCHAR) {
      image =
          image.colourspace(image.bands() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
    }
    if (image.has_alpha()) {
      image = image.flatten(vips::VImage::option()->set("background", std::vector<double>{255}));
    }
    return image;
  }

  // The savers that ignore `strip` write what the image carries.
  static vips::VImage WithoutMetadata(const vips::VImage& image) {
    vips::VImage copy = image.copy();
    const std::unique_ptr<char*, decltype(&g_strfreev)> fields(
        vips_image_get_fields(copy.get_image()), g_strfreev);
    for (char** field = fields.get(); *field; ++field) copy.remove(*field);
    return copy;
  }

  std::optional<std::string> Save(const vips::VImage& image, bool jpeg) const {
    vips::VOption* options = vips::VImage::option()->set("strip", true);
    const char* suffix = ".jpg";
    bool (*sift)(std::string*) = SiftJpeg;
    if (jpeg) {
      options->set("Q", kJpegQuality);
    } else if (kind_ == Kind::kPng) {
      suffix = ".png";
      sift = SiftPng;
    } else if (kind_ == Kind::kGif) {
      suffix = ".gif";
      sift = nullptr;  // the GIF saver writes no metadata
    } else if (kind_ == Kind::kWebp) {
      suffix = ".webp";
      sift = SiftWebp;
      options->set("Q", kWebpQuality);
    }
    void* buffer = nullptr;
    size_t size = 0;
    image.write_to_buffer(suffix, &buffer, &size, options);
    std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
    std::string bytes(static_cast<const char*>(buffer), size);
    if (sift && !sift(&bytes)) return std::nullopt;
    return bytes;
  }

  bool Damaged(Kind kind) {
    cause_ = LooksCut(fd_, kind) ? "file troncato" : "file danneggiato";
    return false;
  }

  std::string path_;
  int fd_ = -1;
  std::optional<vips::VSource> source_;
  std::optional<vips::VImage> decoded_;
  Kind kind_ = Kind::kJpeg;
  bool to_srgb_ = false;
  int64_t width_ = 0, height_ = 0, bands_ = 0, band_bytes_ = 0, whole_factor_ = 1;
  std::string cause_;
};

struct Album {
  std::string path;
  DerivedRecord record;
  std::vector<std::string> folders;  // per size, as written on disk
  std::vector<bool> ready;           // per size: the folder is there to write in
  size_t pending = 0;                // pictures not finished
  bool dirty = false;                // the record changed since it was written
  int record_failure = kOk;          // of the record's last write
};

using Problems = std::vector<std::pair<size_t, DeriveProblem>>;  // by size

struct Job {
  size_t copy = 0;
  size_t album = 0;
  std::string name;           // the copy's file name
  std::vector<size_t> sizes;  // the sizes to make
  // Filled by the worker that makes the job, read once it is reported.
  std::vector<DerivedEntry> made;
  Problems plain;
  Problems failed;
  int64_t cost = 0;  // the decoded memory it was let in with
};

bool IsRealFolder(const std::string& path) {
  struct stat st;
  return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// A few words on why a file could not be written, from its failure number.
std::string WriteCause(int failure) {
  if (failure == kDiscoPieno) return "disco pieno";
  if (failure == kPercorsoNonTrovato) return "cartella mancante";
  return "scrittura non riuscita";
}

// Makes <album>/<wanted> a folder to write in: the one there, the same in
// another case renamed, or a new one. A link is not followed: it could lead
// out of the album. Temporary files that a crash left are removed.
bool PrepareSizeFolder(const std::string& album, const std::string& wanted) {
  std::string path = album + "/" + wanted;
  std::error_code error;
  std::string other_case;
  bool exact = false;
  for (fs::directory_iterator it(album, error), end; !error && it != end; it.increment(error)) {
    std::string name = it->path().filename().string();
    if (name == wanted) {
      exact = true;
    } else if (other_case.empty() && EqualIgnoringCase(name, wanted) &&
               IsRealFolder(album + "/" + name)) {
      other_case = name;
    }
  }
  // A failed rename or mkdir shows in the check below.
  if (!exact && !other_case.empty()) {
    (void)std::rename((album + "/" + other_case).c_str(), path.c_str());
  } else if (!exact) {
    (void)::mkdir(path.c_str(), 0777);
  }
  if (!IsRealFolder(path)) return false;
  for (fs::directory_iterator it(path, error), end; !error && it != end; it.increment(error)) {
    std::string name = it->path().filename().string();
    if (name.starts_with(kDerivedTemporaryPrefix)) ::unlink((path + "/" + name).c_str());
  }
  return true;
}

void PrepareAlbum(Album* album, const std::vector<DerivedSize>& sizes, bool capitals) {
  album->record = DerivedRecord::Read(album->path);
  for (const DerivedSize& size : sizes) {
    album->folders.push_back(capitals ? ToUpper(size.folder) : ToLower(size.folder));
    album->ready.push_back(PrepareSizeFolder(album->path, album->folders.back()));
  }
}

int64_t Nanoseconds(const decltype(stat::st_mtim)& time) {
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// True when the derived picture is the file the record says this program
// wrote: anyone else's write or touch changes its size or time.
bool AsWritten(const std::string& derived, const DerivedEntry& entry) {
  struct stat st;
  return ::lstat(derived.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
         st.st_size == entry.made_bytes && Nanoseconds(st.st_mtim) == entry.made_mtime_ns;
}

// Decides which sizes of the job must be made. A derived picture that its
// record shows up to date stays, renamed when only the case of its name
// changed; the record forgets the others before they are remade, so that a
// crash meanwhile cannot leave a record that vouches for a stale picture.
void Plan(Job* job, Album* album, const CopyRecord& copy, const std::vector<DerivedSize>& sizes) {
  struct stat st;
  bool have_source = ::stat(copy.source.c_str(), &st) == 0 && S_ISREG(st.st_mode);
  std::string source_key = ToLower(copy.source);
  for (size_t s = 0; s < sizes.size(); ++s) {
    std::string folder = album->path + "/" + album->folders[s];
    std::string derived = folder + "/" + job->name;
    if (!album->ready[s]) {
      job->failed.push_back({s, {copy.source, derived, "cartella non creata"}});
      continue;
    }
    const DerivedEntry* found = album->record.Find(album->folders[s], job->name);
    if (!found) {
      job->sizes.push_back(s);
      continue;
    }
    DerivedEntry entry = *found;
    if (have_source && entry.pixels == sizes[s].pixels && entry.source == source_key &&
        entry.bytes == st.st_size && entry.mtime_ns == Nanoseconds(st.st_mtim)) {
      const std::string was = folder + "/" + entry.copy_name;
      const bool named =
          entry.copy_name == job->name || std::rename(was.c_str(), derived.c_str()) == 0;
      if (named && AsWritten(derived, entry)) {
        if (entry.folder != album->folders[s] || entry.copy_name != job->name) {
          entry.folder = album->folders[s];
          entry.copy_name = job->name;
          album->record.Put(entry);
          album->dirty = true;
        }
        if (entry.plain) job->plain.push_back({s, {copy.source, derived, entry.cause}});
        continue;
      }
    }
    album->record.Erase(entry.folder, entry.copy_name);
    album->dirty = true;
    job->sizes.push_back(s);
  }
}

// The decoded memory a picture was let in with, given back when this goes.
// Declared before the picture, it goes after it, once its memory is free.
class Admitted {
 public:
  Admitted() = default;
  Admitted(const Admitted&) = delete;
  Admitted& operator=(const Admitted&) = delete;
  ~Admitted() {
    if (gate_) gate_->Release(cost_);
  }
  void Admit(MemoryGate* gate, int64_t cost) {
    gate->Admit(cost);
    gate_ = gate;
    cost_ = cost;
  }

 private:
  MemoryGate* gate_ = nullptr;
  int64_t cost_ = 0;
};

// Makes the planned sizes of one picture once `gate` lets its decoded memory
// in. Runs on a worker thread and touches nothing but the job.
void Make(Job* job, const Album& album, const CopyRecord& copy,
          const std::vector<DerivedSize>& sizes, bool vips_ready, MemoryGate* gate) {
  if (job->sizes.empty()) return;
  auto derived = [&](size_t s) { return album.path + "/" + album.folders[s] + "/" + job->name; };
  Fd fd;
  struct stat st;
  if (int failure = OpenHostInput(copy.source, &fd);
      failure != kOk || ::fstat(fd.get(), &st) != 0) {
    const char* cause = failure == kFileNonTrovato ? "sorgente mancante" : "sorgente non leggibile";
    for (size_t s : job->sizes) job->failed.push_back({s, {copy.source, derived(s), cause}});
    return;
  }
  // Largest first, so that the smaller sizes are scaled from it.
  std::stable_sort(job->sizes.begin(), job->sizes.end(),
                   [&](size_t a, size_t b) { return sizes[a].pixels > sizes[b].pixels; });
  Admitted admitted;
  SourcePicture picture;
  bool scalable = vips_ready && picture.Open(fd.get(), copy.source);
  if (scalable) {
    job->cost = picture.Cost(sizes[job->sizes.front()].pixels, job->sizes.size() > 1);
    admitted.Admit(gate, job->cost);
  }
  for (size_t s : job->sizes) {
    std::optional<std::string> scaled;
    if (scalable) scaled = picture.Scale(sizes[s].pixels, s != job->sizes.back());
    std::string folder = album.path + "/" + album.folders[s];
    struct stat written;
    int failure = WriteFileInPlace(
        folder, job->name,
        [&](int out) {
          if (scaled) return WriteAll(out, *scaled);
          if (::lseek(fd.get(), 0, SEEK_SET) != 0) return static_cast<int>(kErroreAccesso);
          return CopyHostData(fd.get(), out);
        },
        &written);
    if (failure != kOk) {
      job->failed.push_back({s, {copy.source, derived(s), WriteCause(failure)}});
      continue;
    }
    const std::string why = scaled       ? std::string()
                            : vips_ready ? picture.cause()
                                         : "riduzione non disponibile";
    if (!scaled) job->plain.push_back({s, {copy.source, derived(s), why}});
    job->made.push_back(DerivedEntry{album.folders[s], sizes[s].pixels, job->name,
                                     ToLower(copy.source), st.st_size, Nanoseconds(st.st_mtim),
                                     written.st_size, Nanoseconds(written.st_mtim), !scaled, why});
  }
}

void Report(Problems* problems, std::vector<DeriveProblem>* out) {
  std::stable_sort(problems->begin(), problems->end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& [size, problem] : *problems) out->push_back(std::move(problem));
}

// Takes an exclusive lock on each folder, in sorted order so that two
// passes never hold one each and wait for the other's. A folder that cannot
// be opened or locked is passed over: the lock only keeps passes apart.
std::vector<Fd> LockFolders(const std::set<std::string>& folders) {
  std::vector<Fd> held;
  for (const std::string& folder : folders) {
    Fd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd.valid()) continue;
    int locked;
    do {
      locked = ::flock(fd.get(), LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    if (locked == 0) held.push_back(std::move(fd));
  }
  return held;
}

}  // namespace

bool SizeFolderIsSafe(const std::string& folder) {
  return !folder.empty() && folder[0] != '.' &&
         folder.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos;
}

bool IsDerivablePicture(const std::string& path) {
  std::string extension = ToLower(Extension(path));
  for (std::string_view known : {"jpg", "jpeg", "png", "gif", "webp", "tif", "tiff", "bmp"}) {
    if (extension == known) return true;
  }
  return false;
}

DeriveOutcome DerivePictures(const std::vector<CopyRecord>& copies,
                             const std::vector<DerivedSize>& all_sizes, bool capitals,
                             const std::function<bool(size_t, size_t)>& progress,
                             const DeriveOptions& options) {
  DeriveOutcome outcome;
  std::vector<DerivedSize> sizes;
  for (const DerivedSize& size : all_sizes) {
    auto same_folder = [&](const DerivedSize& kept) {
      return EqualIgnoringCase(kept.folder, size.folder);
    };
    if (SizeFolderIsSafe(size.folder) && size.pixels > 0 &&
        std::none_of(sizes.begin(), sizes.end(), same_folder)) {
      sizes.push_back(size);
    }
  }
  if (sizes.empty()) return outcome;

  // The album folder of each copy that gets derived pictures, or nothing.
  std::vector<std::optional<std::string>> album_of(copies.size());
  std::set<std::string> sites;
  for (size_t i = 0; i < copies.size(); ++i) {
    const std::string& copy = copies[i].copy;
    const size_t slash = copy.rfind('/');
    if (!IsDerivablePicture(copies[i].source) || slash == std::string::npos ||
        slash + 1 == copy.size()) {
      continue;
    }
    album_of[i] = copy.substr(0, slash);
    const std::string site = fs::path(*album_of[i]).parent_path().string();
    sites.insert(site.empty() ? "." : site);
  }
  if (sites.empty()) return outcome;
  const std::vector<Fd> locks = LockFolders(sites);
  bool vips_ready = VIPS_INIT("vetrina-foto") == 0;

  std::vector<Album> albums;
  std::vector<Job> jobs;
  for (size_t i = 0; i < copies.size(); ++i) {
    if (!album_of[i]) continue;
    auto album = std::find_if(albums.begin(), albums.end(),
                              [&](const Album& a) { return a.path == *album_of[i]; });
    if (album == albums.end()) {
      albums.emplace_back().path = *album_of[i];
      PrepareAlbum(&albums.back(), sizes, capitals);
      album = albums.end() - 1;
    }
    Job job;
    job.copy = i;
    job.album = static_cast<size_t>(album - albums.begin());
    job.name = copies[i].copy.substr(album_of[i]->size() + 1);
    Plan(&job, &*album, copies[i], sizes);
    ++album->pending;
    jobs.push_back(std::move(job));
  }
  for (Album& album : albums) {
    if (album.dirty) album.record_failure = album.record.Write(album.path);
    album.dirty = false;
  }

  MemoryGate gate(options.memory_budget > 0 ? options.memory_budget : DefaultDecodeBudget());
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<size_t> finished;
  std::atomic<size_t> next = 0;
  std::atomic<bool> stop = false;
  const size_t wanted =
      options.workers > 0 ? options.workers : std::max(1u, std::thread::hardware_concurrency());
  const size_t threads = std::min(wanted, jobs.size());
  size_t running = threads;  // guarded by `mutex`
  auto work = [&] {
    while (!stop) {
      size_t i = next++;
      if (i >= jobs.size()) break;
      Make(&jobs[i], albums[jobs[i].album], copies[jobs[i].copy], sizes, vips_ready, &gate);
      std::lock_guard lock(mutex);
      finished.push_back(i);
      changed.notify_one();
    }
    std::lock_guard lock(mutex);
    --running;
    changed.notify_one();
  };
  std::vector<std::jthread> workers;
  for (size_t w = 0; w < threads; ++w) {
    try {
      workers.emplace_back([&work] {
        work();
        vips_thread_shutdown();
      });
    } catch (const std::system_error&) {
      // No more threads to be had: the ones there do the work, or this one.
      std::lock_guard lock(mutex);
      running -= threads - w - (workers.empty() ? 1 : 0);
      break;
    }
  }
  if (workers.empty()) work();  // there is a job: `sites` was not empty

  // The records, the outcome and the callback stay on this thread.
  size_t done = 0;
  std::unique_lock lock(mutex);
  while (true) {
    changed.wait(lock, [&] { return !finished.empty() || running == 0; });
    if (finished.empty()) break;
    std::vector<size_t> batch = std::exchange(finished, {});
    lock.unlock();
    for (size_t i : batch) {
      Album& album = albums[jobs[i].album];
      for (DerivedEntry& entry : jobs[i].made) album.record.Put(std::move(entry));
      album.dirty = album.dirty || !jobs[i].made.empty();
      if (--album.pending == 0 && album.dirty) {
        album.record_failure = album.record.Write(album.path);
        album.dirty = false;
      }
      ++done;
      if (!stop && progress && !progress(done, jobs.size())) stop = true;
    }
    lock.lock();
  }
  lock.unlock();
  workers.clear();
  for (Album& album : albums) {
    if (album.dirty) album.record_failure = album.record.Write(album.path);
  }
  // What libvips' cache keeps of the pass (open sources, decoded tiles) is
  // of no use to the next: emptying it closes the files now.
  if (vips_ready) {
    int most = vips_cache_get_max();
    vips_cache_set_max(0);
    vips_cache_set_max(most);
  }

  for (Job& job : jobs) {
    Report(&job.plain, &outcome.plain_copies);
    Report(&job.failed, &outcome.failed);
    outcome.largest_cost = std::max(outcome.largest_cost, job.cost);
  }
  // A record that could not be written costs nothing but time: the next
  // build makes its pictures again. It is told all the same.
  for (const Album& album : albums) {
    if (album.record_failure == kOk) continue;
    outcome.failed.push_back(
        {album.path, album.path + "/" + std::string(DerivedRecord::kFileName),
         "registro delle immagini ridotte non scritto: " + WriteCause(album.record_failure)});
  }
  outcome.peak_cost = gate.peak();
  outcome.stopped = stop;
  return outcome;
}

}  // namespace vf
