// The qvt command.
#include <cstdio>

int main() {
  std::puts("qvt: not built yet");
  return 0;
}
