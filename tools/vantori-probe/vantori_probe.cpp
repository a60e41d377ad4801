// vantori-probe: prints what the disk layer sees (being written).
#include <cstdio>
int main() {
  std::fprintf(stderr, "vantori-probe: not built yet\n");
  return 1;
}
