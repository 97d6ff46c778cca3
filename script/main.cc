#include <fstream>
#include <iostream>
#include <string>

#include <filesystem>

#include "script/script_runner.h"

namespace {

constexpr char kUso[] =
    "Uso: vetrina-foto-script SCRIPT\n"
    "     vetrina-foto-script -      (lo script dallo standard input)\n"
    "\n"
    "Esegue Vetrina Foto senza finestra: legge lo script riga per riga, esegue\n"
    "gli stessi comandi della finestra e scrive su standard output ogni messaggio,\n"
    "domanda, finestra di dialogo e comando avviato, uno per riga.\n"
    "\n"
    "Stato di uscita: 0 se lo script arriva alla fine o a END, 2 se una riga non\n"
    "viene compresa, 1 per ogni altro errore.\n"
    "\n"
    "Il linguaggio degli script: man vetrina-foto-script, docs/runner.md.\n";

}  // namespace

// vetrina-foto-script SCRIPT: runs the program's commands from a script with
// no window ("-" or no argument: standard input; --help or -h: the usage).
int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const std::string argomento = argc < 2 ? "-" : argv[1];
  if (argomento == "--help" || argomento == "-h") {
    std::cout << kUso;
    return vf::kScriptFinito;
  }
  std::error_code ec;
  std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
  std::string folder = ec ? std::filesystem::current_path().string() : self.parent_path().string();
  vf::ScriptRunner runner(std::cout, std::cerr, folder);
  if (argomento == "-") return runner.Run(std::cin);
  std::ifstream script(argomento, std::ios::binary);
  if (!script) {
    std::cerr << "vetrina-foto-script: impossibile leggere " << argomento << '\n';
    return vf::kScriptErrore;
  }
  return runner.Run(script);
}
