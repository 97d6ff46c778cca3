#include <cstdio>

int main() {
  std::puts("Vetrina Foto: la finestra non e' ancora disponibile; tutto e' stato compilato.");
  return 0;
}
