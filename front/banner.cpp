#include "front/banner.h"

#include <cstdio>

namespace {

constexpr const char* notice[] = {
    "Sealwright prepares keys and signed boot images for two-stage secure boot.\n",
    "Fused keys cannot be replaced: keep a backup of the root key files.\n",
    "No output file means failure: verify every image before you ship it.\n",
    "There is no warranty, to the extent that the law permits.\n",
    "Licence: MIT, see the file LICENSE.\n",
    "Manual: man Sealwright_V21; formats and safe use: the docs folder.\n\n",
};

void print_banner(const char* title) {
  std::fputs("\n", stdout);
  std::fputs(title, stdout);
  for (const char* line : notice) std::fputs(line, stdout);
}

}  // namespace

void print_sb20_banner() {
  print_banner("***Sealwright v2.1 for Vextral Application Processor***\n");
}

void print_sb10_banner() {
  print_banner("***Sealwright v1.1 for Vextral Application Processor***\n");
}

std::int32_t print_version(Arguments /*arguments*/) {
  std::fputs("sealWright version 2.1\n", stdout);
  return 0;
}
