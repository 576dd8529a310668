// SPDX-License-Identifier: GPL-3.0-or-later
#include "crash/BuildId.h"

#include <link.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace velmora {

namespace {

constexpr std::size_t kAlignment = 4;  // of the parts of a note

std::size_t Aligned(std::size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

std::string Digits(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += kDigits[value / 16];
    text += kDigits[value % 16];
  }
  return text;
}

// The mark among the notes of a segment: each has a head, a name and a text.
std::string IdAmong(std::string_view notes) {
  constexpr std::string_view kOwner("GNU\0", 4);
  ElfW(Nhdr) head;
  while (notes.size() >= sizeof(head)) {
    std::memcpy(&head, notes.data(), sizeof(head));
    notes.remove_prefix(sizeof(head));
    if (notes.size() < Aligned(head.n_namesz) + head.n_descsz) break;
    if (head.n_type == NT_GNU_BUILD_ID && notes.substr(0, head.n_namesz) == kOwner)
      return Digits(notes.substr(Aligned(head.n_namesz), head.n_descsz));
    notes.remove_prefix(std::min(notes.size(), Aligned(head.n_namesz) + Aligned(head.n_descsz)));
  }
  return "";
}

// The program itself comes first.
int ReadProgram(dl_phdr_info* info, std::size_t, void* id) {
  for (ElfW(Half) i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = info->dlpi_phdr[i];
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader tells addresses as numbers
    const void* begin = reinterpret_cast<const void*>(info->dlpi_addr + segment.p_vaddr);
    auto& found = *static_cast<std::string*>(id);
    if (segment.p_type == PT_NOTE && found.empty()) found = IdAmong({static_cast<const char*>(begin), segment.p_memsz});
  }
  return 1;
}

}  // namespace

std::string BuildId() {
  std::string id;
  dl_iterate_phdr(ReadProgram, &id);
  return id;
}

}  // namespace velmora
