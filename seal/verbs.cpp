#include "seal/verbs.h"

namespace sealwright {

Objection make(Result& result, const Options& options) {
  switch (options.verb) {
    case Verb::root_key:
      return make_root_key(result, options);
    case Verb::stage2_key:
      return make_stage2_key(result, options);
    case Verb::bl1:
      return make_bl1(result, options);
    case Verb::bl2:
      return make_bl2(result, options);
    case Verb::export_key:
      return export_key(result, options);
    default:
      return Complaint{ExitStatus::not_done, "no command given"};
  }
}

}  // namespace sealwright
