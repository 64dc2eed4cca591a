// Runs the commands of both tools on damaged files and judges each outcome: it comes in time, with
// a status and a line that the command may end with and without a sanitizer report; what is signed
// or checked is accepted only as it was made; a failure leaves nothing behind.
//
//   mutation [--runs N] [--seed S]

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>
#include <random>

#include "crypto/bytes.h"
#include "scheme/private_key_file.h"
#include "tests/support/schemes.h"

namespace {

using Engine = std::mt19937_64;

constexpr int workers = 2;
constexpr unsigned long one_key_in = 100;  // making a key takes as long as many other runs

// clang-format off
/// What a file is to a command.
enum class Role { noise, image, sealed1, sealed2, public_key, proof, root_info, efuse, burnt_efuse,
                  root_private, private_key };
enum class Kind { make, sign, verify };
enum Verdict { accepted, refused, hang, report, wrong_signal, forgery, left_over, wrong, verdict_count };
constexpr const char* verdict_names[] = {"accepted", "refused", "hangs", "sanitizer reports",
    "wrong signals", "forgeries", "left-over outputs", "wrong statuses or lines"};
constexpr std::uint32_t hostile_words[] = {
    0, 1, 3, 4, 5, 7, 20, 63, 64, 65, 124, 127, 128, 129, 132, 136, 137, 140, 252, 255, 256, 257,
    259, 260, 264, 268, 272, 273, 308, 604, 640, 1024, 1025, 1188, 2048, 65536, 0x7FFFFFFC,
    0x7FFFFFFF, 0x80000000, 0xFFFFFF80, 0xFFFFFFFC, 0xFFFFFFFF};
// clang-format on
using Counts = std::array<unsigned long, verdict_count>;

struct Command {
  Kind kind;
  int stage;
  Args args;
  std::vector<std::pair<std::string, Role>> inputs;
  std::vector<std::string> outputs;
  std::size_t added = 0;  // bytes that signing puts behind the image
};

Bytes padded(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

std::uint32_t word_at(const Bytes& bytes, std::size_t at) {
  return load_le32(&bytes.at(at + 3) - 3);
}

/// The public key that -STAGE2_VERIFY takes from a file; none when it can verify nothing.
std::optional<Bytes> key_in(const Scheme& scheme, const Bytes& file) {
  if (scheme.is_v11()) {
    const Bytes record = padded(file, 308);
    const std::size_t n_length = word_at(record, 36), e_length = word_at(record, 168);
    if (n_length > 308 - 40 || e_length > 308 - 172) return std::nullopt;
    return padded(joined(slice(record, 40, n_length), slice(record, 172, e_length)), 132);
  }
  const Bytes record = padded(file, 1024);
  const auto n_digits = static_cast<std::int32_t>(word_at(record, 0)) / 4;
  const auto e_digits = static_cast<std::int32_t>(word_at(record, 260)) / 4;
  if (n_digits < 1 || n_digits > 64 || e_digits < 1 || e_digits > 64) return std::nullopt;
  Bytes e = slice(record, 264, 4 * static_cast<std::size_t>(e_digits));
  while (!e.empty() && e.back() == 0) e.pop_back();
  return joined(slice(record, 4, 4 * static_cast<std::size_t>(n_digits)), e);
}

/// The bytes of a file that its command signs or checks. None: it is to be refused.
std::optional<Bytes> checked_bytes(const Scheme& scheme, Role role, const Bytes& file) {
  switch (role) {
    case Role::sealed1:
      if (file.size() < scheme.context_length) return std::nullopt;
      return padded(file, file.size() - scheme.context_length + scheme.uncovered);
    case Role::public_key:
      return key_in(scheme, file);
    case Role::proof:  // the whole record but for the header, where it has one
      return scheme.is_v11() ? slice(padded(file, 308), 32, 308 - 32) : padded(file, 548);
    case Role::root_info:
      return padded(file, scheme.root_proven_length);
    case Role::burnt_efuse:
      return padded(file, scheme.efuse_length);
    default:
      return file;
  }
}

bool must_abort(const Scheme& scheme, Role role, const Bytes& file) {
  switch (role) {
    case Role::public_key:
    case Role::proof:
      return scheme.is_v11() ? word_at(padded(file, 308), 36) > 1024 : file.size() > 1024;
    case Role::private_key:
    case Role::root_private:
      return file.size() > 2048;
    default:
      return false;
  }
}

/// Where length fields stand.
std::vector<std::size_t> length_fields(const Scheme& scheme, Role role, std::size_t size) {
  switch (role) {
    case Role::public_key:
    case Role::proof:
      if (scheme.is_v11()) return {0, 28, 32, 36, 168, 176};
      return {0, 260, 288};
    case Role::root_private:
      if (scheme.is_v11()) return {0, 132, 264, 332, 400, 468, 536};
      return {0, 260, 268, 528, 660, 792, 924, 1056};
    case Role::private_key:
      if (scheme.is_v11()) return {0, 28, 32, 36, 168, 300, 368, 436, 504, 572};
      return {0, 260, 268, 528, 660, 792, 924, 1056};
    case Role::sealed1:
      if (scheme.is_v11() || size < 1024) return {};
      return {size - 1024, size - 764, size - 756, size - 496, size - 236};
    default:
      return {};
  }
}

void change(Bytes& bytes, const Scheme& scheme, Role role, Engine& engine) {
  const auto below = [&](std::size_t limit) { return engine() % limit; };
  const auto any_byte = [&] { return static_cast<std::uint8_t>(engine()); };
  const std::size_t size = bytes.size();
  const std::size_t how = size < 4 ? 0 : below(6);
  if (how == 0) {
    const std::size_t more = below(3) == 0 ? below(2100) : 1 + below(32);
    for (std::size_t i = 0; i < more; ++i) bytes.push_back(any_byte());
  } else if (how == 1) {
    bytes.resize(below(size));
  } else if (how == 2) {
    for (std::size_t i = 0; i <= below(4); ++i) bytes[below(size)] ^= std::uint8_t(1 << below(8));
  } else if (how == 3) {
    const std::size_t from = below(size), what = below(3);
    const std::size_t end = std::min(size, from + 1 + below(64));
    for (std::size_t i = from; i < end; ++i)
      bytes[i] = what == 0 ? any_byte() : what == 1 ? 0 : 255;
  } else {
    const std::vector<std::size_t> fields = length_fields(scheme, role, size);
    const bool anywhere = fields.empty() || below(4) == 0;
    const std::size_t at = anywhere ? below(size) : fields[below(fields.size())];
    store_le32(&bytes[std::min(at, size - 4)], hostile_words[below(std::size(hostile_words))]);
  }
}

/// A damaged copy; of a private-key file often what it holds is damaged under the encryption.
Bytes damaged(Bytes bytes, const Scheme& scheme, Role role, Engine& engine) {
  const auto size_of = [](const Bytes& b) { return static_cast<std::uint32_t>(b.size()); };
  const bool is_private = role == Role::root_private || role == Role::private_key;
  const bool opened =
      is_private && engine() % 3 != 0 &&
      do_PrivateKey_Decrypt(scheme.key_file_mode, bytes.data(), size_of(bytes)) == 0;
  do {
    change(bytes, scheme, role, engine);
  } while (engine() % 4 == 0);
  if (opened && !bytes.empty()) {
    bytes.resize((bytes.size() + 15) / 16 * 16);
    do_PrivateKey_Encrypt(scheme.key_file_mode, bytes.data(), size_of(bytes));
  }
  return bytes;
}

/// Keys, images and commands of a scheme.
class Workshop {
 public:
  explicit Workshop(const Scheme& scheme) : scheme_(scheme), files_(make_device(scheme)) {
    const std::string spk = "key" + scheme.public_suffix, prv = "key" + scheme.private_suffix;
    files_["noise.dat"] = counted_bytes(300);
    // clang-format off
    const decltype(Command::inputs) for_stage1 = {
        {"BL1.bin", Role::image}, {scheme.stage2_public, Role::proof}, {scheme.efuse, Role::efuse},
        {scheme.root_private, Role::root_private}, {scheme.root_info, Role::root_info}};
    commands_ = {
        {Kind::sign, 1, {"BL1.bin", "out", "-STAGE1"}, for_stage1, {"out"}, scheme.context_length},
        {Kind::verify, 1, {"sealed1", scheme.efuse, "-VERIFY"},
         {{"sealed1", Role::sealed1}, {scheme.efuse, Role::burnt_efuse}}, {}},
        {Kind::sign, 2, {"BL2.bin", "out", prv, "-STAGE2"},
         {{"BL2.bin", Role::image}, {prv, Role::private_key}}, {"out"}, scheme.signature_length},
        {Kind::verify, 2, {"sealed2", spk, "-STAGE2_VERIFY"},
         {{"sealed2", Role::sealed2}, {spk, Role::public_key}}, {}},
        {Kind::make, 1, {"-KEYGEN"}, {{"noise.dat", Role::noise}},
         {scheme.root_info, scheme.root_private, scheme.efuse}},
        {Kind::make, 2, {"key", "-STAGE2_KEYGEN"}, {{"noise.dat", Role::noise}}, {spk, prv}}};
    if (scheme.is_v11()) return;
    commands_.push_back({Kind::sign, 1, {"BL1.bin", "out", "x", "-P"}, for_stage1, {"out"},
                         scheme.context_length + 48});
    commands_.push_back({Kind::verify, 1, {"sealed_p", scheme.efuse, "-VERIFY"},
                         {{"sealed_p", Role::sealed1}, {scheme.efuse, Role::burnt_efuse}}, {}});
    // clang-format on
    const TempDirectory there;
    for (const auto& [name, bytes] : files_) write_bytes(there / name, bytes);
    run_tool(full_tool, scheme, commands_[6].args, there.path());
    files_["sealed_p"] = read_bytes(there / "out");
  }

  /// One run with one damaged file, or with a file of the other scheme in its place.
  Verdict try_once(Engine& engine, const Workshop& other, const std::string& name) const {
    const Command* command = nullptr;
    do {
      command = &commands_[engine() % commands_.size()];
    } while (command->kind == Kind::make && engine() % one_key_in != 0);
    const auto& [file, role] = command->inputs[engine() % command->inputs.size()];
    const bool by_client = is_client_command(command->args) && engine() % 2 == 0;
    Snapshot before;
    for (const auto& input : command->inputs) before[input.first] = files_.at(input.first);
    before[file] = damaged(before[file], scheme_, role, engine);
    if (engine() % 16 == 0) {
      const auto far = static_cast<std::ptrdiff_t>(engine() % other.files_.size());
      before[file] = std::next(other.files_.begin(), far)->second;
    }
    const TempDirectory here;
    for (const auto& [input, bytes] : before) write_bytes(here / input, bytes);

    const Outcome outcome =
        run_tool(by_client ? client_tool : full_tool, scheme_, command->args, here.path());
    const Verdict verdict = judge(*command, file, role, before, here, outcome);
    if (verdict == accepted || verdict == refused) return verdict;
    const Path kept = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(kept);
    for (const auto& [input, bytes] : before) write_bytes(kept / input, bytes);
    std::cout << verdict_names[verdict] << ": " << kept << " " << scheme_.option << " "
              << command->args.back() << ", damaged " << file << ", status " << outcome.status
              << ", signal " << outcome.signal << "\n"
              << outcome.output << outcome.errors << std::flush;
    return verdict;
  }

 private:
  Verdict judge(const Command& command, const std::string& file, Role role, const Snapshot& before,
                const TempDirectory& here, const Outcome& outcome) const {
    const bool aborts = must_abort(scheme_, role, before.at(file));
    if (!outcome.in_time) return hang;
    if (outcome.status == sanitizer_exit_status || !outcome.errors.empty()) return report;
    if (outcome.signal != (aborts ? SIGABRT : 0)) return wrong_signal;
    if (!outcome.output.starts_with(banner_of(scheme_))) return wrong;
    const std::string text = outcome.output.substr(banner_of(scheme_).size());
    const std::string success = command.kind == Kind::sign     ? signed_line[command.stage]
                                : command.kind == Kind::verify ? verified_line[command.stage]
                                                               : scheme_.making_line();
    Snapshot after = read_directory(here.path());
    if (aborts) return after != before ? left_over : text.empty() ? refused : wrong;
    const std::optional<bool> good = must_accept(command, role, before.at(file), file);
    if (text != success) {
      if (after != before) return left_over;
      return good != true && may_fail_with(command, text, outcome.status) ? refused : wrong;
    }
    if (good == false) return forgery;
    for (const std::string& name : command.outputs) {
      if (after.erase(name) != 1) return wrong;
    }
    if (after != before) return left_over;
    if (outcome.status != 0) return wrong;
    return is_sound(command, before, here) ? accepted : forgery;
  }

  /// Whether a damaged file still has to be accepted; nothing where either may be.
  std::optional<bool> must_accept(const Command& command, Role role, const Bytes& bytes,
                                  const std::string& file) const {
    if (role == Role::noise) return true;
    if (role == Role::image) return command.stage == 2 || bytes.size() % scheme_.block == 0;
    const bool same =
        checked_bytes(scheme_, role, bytes) == checked_bytes(scheme_, role, files_.at(file));
    const bool has_unused_items = role == Role::root_private || role == Role::private_key;
    return has_unused_items && !same ? std::nullopt : std::optional<bool>(same);
  }

  bool may_fail_with(const Command& command, const std::string& text, int status) const {
    if (command.kind == Kind::make) return false;
    if (command.kind == Kind::verify) return text == refused_line[command.stage] && status == 255;
    // The low bytes of the codes that signing ends with; a ragged file fails in silence.
    if (text.empty()) return !scheme_.is_v11() && status == 0;
    if (text == popp_line) return command.stage == 1 && (status == 0x00 || status == 0x90);
    return text == not_signed_line[command.stage] &&
           (status == 0x90 || (command.stage == 1 && (status == 0x00 || status == 0x50)));
  }

  /// Whether what a command made holds under the keys that were not damaged.
  bool is_sound(const Command& command, const Snapshot& before, const TempDirectory& here) const {
    if (command.kind == Kind::verify) return true;
    for (const auto& [name, bytes] : files_) {
      const auto& made = command.outputs;
      if (std::find(made.begin(), made.end(), name) == made.end()) write_bytes(here / name, bytes);
    }
    if (command.kind == Kind::make) {
      run_tool(full_tool, scheme_, commands_[command.stage == 1 ? 0 : 2].args, here.path());
    } else {
      const Bytes &image = before.at(command.args[0]), made = read_bytes(here / "out");
      if (made.size() != image.size() + command.added) return false;
      const bool is_plain = command.stage == 2 || scheme_.is_v11();
      if (is_plain && slice(made, 0, image.size()) != image) return false;
    }
    Args args = commands_[command.stage == 1 ? 1 : 3].args;
    args[0] = "out";
    const Outcome outcome = run_tool(full_tool, scheme_, args, here.path());
    return outcome.output == banner_of(scheme_) + verified_line[command.stage] &&
           outcome.errors.empty() && outcome.status == 0;
  }

  const Scheme& scheme_;
  Snapshot files_;
  std::vector<Command> commands_;
};

int run(unsigned long runs, std::uint64_t seed) {
  const Workshop workshops[] = {Workshop(v11), Workshop(v21)};
  constexpr int shared = MAP_SHARED | MAP_ANONYMOUS;
  void* memory = mmap(nullptr, sizeof(Counts[workers]), PROT_READ | PROT_WRITE, shared, -1, 0);
  auto* counts = new (memory) Counts[workers]();
  for (unsigned long worker = 0; worker < workers; ++worker) {
    if (fork() != 0) continue;
    for (unsigned long i = worker; i < runs; i += workers) {
      std::seed_seq numbers = {seed, std::uint64_t{i}};
      Engine engine(numbers);
      const std::size_t which = engine() % 2;
      const std::string name = "mutation-" + std::to_string(seed) + "-" + std::to_string(i);
      ++counts[worker][workshops[which].try_once(engine, workshops[1 - which], name)];
    }
    _exit(0);
  }
  bool good = true;
  for (int status = 0; wait(&status) > 0;) good = good && status == 0;
  std::cout << "runs " << runs << ", seed " << seed;
  unsigned long done = 0;
  for (std::size_t i = 0; i < verdict_count; ++i) {
    const unsigned long count = counts[0][i] + counts[1][i];
    std::cout << ", " << verdict_names[i] << " " << count;
    done += count;
    good = good && (i == accepted || i == refused || count == 0);
  }
  std::cout << "\n";
  return good && done == runs ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  unsigned long runs = 400;
  std::uint64_t seed = std::random_device()();
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--runs") runs = std::stoul(argv[i + 1]);
    if (option == "--seed") seed = std::stoull(argv[i + 1]);
  }
  return run(runs, seed);
}
