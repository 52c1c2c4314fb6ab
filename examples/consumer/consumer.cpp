// consumer.cpp - an external program that uses an installed KoZor: includes its headers, links it,
// and finds the archiver at run time.
#include <cstdio>

#include "ZorArchive.h"

int main() {
  ZorArchive archive;
  if (!archive.IsEnabled()) {
    std::puts("the archiver can't be loaded");
    return 1;
  }
  std::puts("KoZor is ready");
}
