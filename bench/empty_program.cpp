// What starting any program costs.

#include <iostream>

int main() {
  return std::cout.good() ? 0 : 1;
}
