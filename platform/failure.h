#ifndef VF_PLATFORM_FAILURE_H_
#define VF_PLATFORM_FAILURE_H_

#include <string>

namespace vf {

// Failure numbers that the file layer reports. Every operation of the file
// layer returns one of them; kOk (0) is success. The numbers are the ones the
// program shows in its messages, after " ERR=".
enum Failure : int {
  kOk = 0,
  kNomeNonValido = 52,      // a slot that is not open, a name Windows refuses
  kFileNonTrovato = 53,     // the source file is missing
  kFileEsistente = 58,      // the target of a rename exists
  kDiscoPieno = 61,         // the disk is full
  kErroreAccesso = 75,      // write refused, read-only drive, permission, anything else
  kPercorsoNonTrovato = 76  // a folder of the path is missing, a drive not mapped
};

// The Italian text of a failure number, as the messages show it after " - ".
std::string FailureText(int number);

}  // namespace vf

#endif  // VF_PLATFORM_FAILURE_H_
