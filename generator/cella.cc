#include "generator/cella.h"

#include "platform/case_fold.h"
#include "publish/site_names.h"
#include "shell/testo.h"

namespace vf {
namespace {

void Scrivi(Vetrina& v, StatoEsecuzione& s, const std::string& riga) {
  s.Nota(v.slots.WriteLine(1, riga));
}

// A file name as the readable text of a button.
std::string Testo_Html(const std::string& testo) {
  std::string out;
  for (char c : testo) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

}  // namespace

bool Voce_Multimediale(const std::string& e) {
  return e == "HTM" || e == "WAV" || e == "MP3" || e == "MID" || e == "WMA" || e == "AVI" ||
         e.compare(0, 2, "MP") == 0;
}

void Apri_Cella(Vetrina& v, StatoEsecuzione& s) {
  const std::string& q = s.Virgolette;
  std::string pulsante = Maiuscole(v) ? "PULSANTE.JPG" : "pulsante.jpg";
  Scrivi(v, s, "<td valign=" + q + "Top" + q + ">");
  Scrivi(v, s,
         "  <table border=" + q + "0" + q + " cellpadding=" + q + "0" + q + " cellspacing=" + q +
             "0" + q + " width=" + q + " 130" + q + ">");
  Scrivi(v, s, "  <tr>");
  Scrivi(v, s,
         "   <td background=" + q + pulsante + q + " width=" + q + "130" + q + " height=" + q +
             "30" + q + ">");
  Scrivi(v, s,
         "    <table border=" + q + "0" + q + " cellpadding=" + q + "0" + q + " cellspacing=" + q +
             "0" + q + " width=" + q + "130" + q + " height=" + q + "30" + q + ">");
  Scrivi(v, s, "     <tr>");
  Scrivi(v, s, "      <td><p align=" + q + "center" + q + ">");
}

void Chiudi_Cella(Vetrina& v, StatoEsecuzione& s) {
  for (const char* riga : {"      </td>", "     </tr>", "    </table>", "   </td>", "  </tr>"}) {
    Scrivi(v, s, riga);
  }
}

void Scrivi_Cella(Vetrina& v, StatoEsecuzione& s) {
  Apri_Cella(v, s);
  s.Estensione.clear();
  size_t punto = s.Nome_File.rfind('.');
  if (punto != std::string::npos) s.Estensione = ToUpper(s.Nome_File.substr(punto + 1));
  const std::string& q = s.Virgolette;
  std::string link;
  if (Voce_Multimediale(s.Estensione)) {
    link = CasoScelto(v, s.Dir_Relativa + s.Nome_File);
    // A direct link carries the file's name, so that every button of the
    // index page has a readable label.
    s.Etichetta = Testo_Html(s.Nome_File);
  } else {
    s.Link_Menu = MenuLinkFromIndex(s.Num_Album, Maiuscole(v));
    s.Etichetta = "SCELTA " + ConBlank(s.Num_Album);
    link = CasoScelto(v, s.Link_Menu);
  }
  Scrivi(v, s, "        <A HREF=" + q + link + q + ">");
  Scrivi(v, s, s.Etichetta + "</A>");
  Chiudi_Cella(v, s);
  Scrivi(v, s, "</table></td>");
}

}  // namespace vf
