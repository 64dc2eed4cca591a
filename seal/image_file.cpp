#include "seal/image_file.h"

#include "util/new_file.h"

namespace sealwright {

Objection write_image(const char* name, std::initializer_list<ByteView> pieces) {
  NewFile file;
  file.create(name, FileAccess::by_umask, Existing::replaced_if_file);
  for (const ByteView piece : pieces) file.write(piece);
  const Failure failure = publish({&file, 1});
  return failed(failure) ? Objection(complain(name, failure)) : std::nullopt;
}

}  // namespace sealwright
