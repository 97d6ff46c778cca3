#include <cstdio>
int main() { std::puts("runner not ready"); return 1; }
