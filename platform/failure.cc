#include "platform/failure.h"

namespace vf {

std::string FailureText(int number) {
  switch (number) {
    case kOk:
      return "";
    case kNomeNonValido:
      return "Nome o numero di file non valido";
    case kFileNonTrovato:
      return "Impossibile trovare il file";
    case kFileEsistente:
      return "File gi\xC3\xA0 esistente";
    case kDiscoPieno:
      return "Disco pieno";
    case kPercorsoNonTrovato:
      return "Impossibile trovare il percorso";
    default:
      return "Errore di accesso al percorso/file";
  }
}

}  // namespace vf
