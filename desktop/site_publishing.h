#ifndef VF_DESKTOP_SITE_PUBLISHING_H_
#define VF_DESKTOP_SITE_PUBLISHING_H_

#include <cstddef>
#include <functional>
#include <string>

#include "platform/host_file_system.h"
#include "platform/user_ops.h"
#include "publish/clean_copies.h"
#include "publish/derived_pictures.h"
#include "publish/hand_over.h"
#include "publish/sizes_file.h"

namespace vf {

// The publishing step of both front ends. When the program's folder holds
// DIMENSIONI.TXT, the album copies of a finished build get their web-sized
// pictures; without the file nothing is written. What went wrong is told
// afterwards, one Italian message per kind, through the user operations:
// the sizes file's bad lines (see BadLinesMessage), the photos whose
// pictures are plain copies ("Immagini non riducibili, copiate come sono:"),
// those whose pictures or record could not be written ("Immagini ridotte
// non scritte:") and those whose scaled pictures got no AVIF ("Immagini
// senza versione AVIF (le pagine mostrano la JPEG):"; the sizes file's "avif
// no" asks for none), each photo by its Windows path once per cause as
// "PATH - CAUSE", lines separated by a CR. Then, unless the sizes file says
// "metadati tieni", the album copies are cleaned of their metadata
// (publish/clean_copies.h), the clean copies being kept for the next build
// in CacheFolder()/pulite (desktop/user_area.h), and the last message tells
// what became of them (see CleanMessage).
class SitePublishing : public PublishingStep {
 public:
  // `fs` reads the sizes file and turns the build's Windows paths into host
  // paths; `ui` gives the program's folder and shows the messages.
  // `progress(done, total)` is told after each picture; when it returns
  // false the pass stops between two pictures and the program ends
  // (FineProgramma). All of them outlive this.
  SitePublishing(HostFileSystem& fs, UserOps& ui, std::function<bool(size_t, size_t)> progress = {},
                 const DeriveOptions& options = {});

  void Publish(const BuiltSite& site) override;

 private:
  HostFileSystem& fs_;
  UserOps& ui_;
  std::function<bool(size_t, size_t)> progress_;
  DeriveOptions options_;
};

// "Righe non valide nel file DIMENSIONI.TXT, non considerate:" and, each on
// a line of its own, the first 20 bad lines as "riga N: TEXT" and
// "(e altre N righe)"; empty when no line is bad.
std::string BadLinesMessage(const SizesFile& sizes);

// The report of the cleaning, paragraphs separated by a blank line (CR CR):
// "Dalle copie pubblicate sono stati tolti posizione GPS e dati
// dell'apparecchio di N immagini." ("di 1 immagine."), then under "Queste
// foto sono state scritte di nuovo senza i loro dati:" and "Queste foto sono
// pubblicate con i loro dati, posizione compresa:" their source photos as
// `photo` names them, each after a CR, a failed write's cause after " - ",
// past 20 "(e altre N)"; empty when there is nothing to say.
std::string CleanMessage(const CleanOutcome& cleaned,
                         const std::function<std::string(const std::string&)>& photo);

}  // namespace vf

#endif  // VF_DESKTOP_SITE_PUBLISHING_H_
