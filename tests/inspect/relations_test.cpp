#include "tests/inspect/reports.h"

namespace {

/// A row of relations.txt.
struct FileRow {
  std::string file, kind, sound, relations;
};
using Block = std::vector<FileRow>;

std::vector<Block> read_blocks() {
  std::vector<Block> blocks(1);
  std::istringstream in(text_file("relations"));
  for (std::string line; std::getline(in, line);) {
    if (line.empty()) blocks.emplace_back();
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    FileRow& row = blocks.back().emplace_back();
    words >> row.file >> row.kind >> row.sound;
    std::getline(words >> std::ws, row.relations);
  }
  return blocks;
}

class Relations : public EndToEnd {
 protected:
  /// A file of the table, by its set, what it is there and how it is changed.
  Bytes make(const std::string& name) {
    Bytes junk(s.efuse_length, 0x5A);
    if (name == "junk") return junk;
    std::istringstream words(name);
    std::string set, what, change;
    std::getline(std::getline(std::getline(words, set, '.'), what, '.'), change, '.');
    const Scheme& scheme = set == "other" ? other_scheme() : s;
    const std::map<std::string, std::string> names = {
        {"root", scheme.root_info}, {"private", scheme.root_private}, {"fuses", scheme.efuse},
        {"stage2", public_key},     {"stage2private", private_key},   {"bl1", "sealed1"},
        {"bl2", "sealed2"}};
    const Files& files = device(set == "B" ? 1 : 0, scheme);
    const Bytes original = files.at(names.at(what));
    if (change == "empty") return sign(0);
    if (change == "keysize") return sign(device(0).at(s.root_info).size() - s.length);
    if (change == "damaged") {  // an image at its start, a key in its proof
      return damage(original, what[0] == 'b' ? 0 : original.size() - 1);
    }
    return what == "bl1" ? change_image(original, change) : change_key(original, change);
  }

 private:
  /// A BL2 with so many bytes of code, signed by the stage-2 key of A.
  Bytes sign(std::size_t code_size) const {
    write_bytes("BL2.bin", some_bytes(code_size));
    expect_run(seal2, 0, line("signed", 2));
    return read_bytes("out");
  }
  Bytes change_image(Bytes image, const std::string& change) const {
    if (change.empty()) return image;
    const std::size_t stage2 = image.size() - s.context_length;
    for (const std::size_t key : {stage2, stage2 + s.context_info}) {
      store_le32(&image[key + s.root.e], 1);
    }
    return image;
  }
  /// The lengths stand before the numbers.
  Bytes change_key(Bytes file, const std::string& change) const {
    const std::size_t n = s.stage2.n, e = s.stage2.e;
    if (change == "longe") store_le32(&file[e - 4], 8);
    if (change == "shortn") store_le32(&file[n - 4], static_cast<std::uint32_t>(s.length - 4));
    if (change == "even") file[n] &= 0xFE;
    if (change == "e1") store_le32(&file[file.size() == 280 ? s.root.e : e], 1);
    if (change == "e5") store_le32(&file[e], 5);
    return file;
  }
};
RUN_FOR_BOTH_SCHEMES(Relations);

TEST_P(Relations, AreSaidInWordsAndJson) {
  for (const Block& block : read_blocks()) {
    NamedBytes files;
    for (const FileRow& row : block) files.emplace_back(row.file, make(row.file));
    const auto reports = describe_all(files);
    for (std::size_t i = 0; i < block.size(); ++i) {
      const auto& [file, kind, sound, relations] = block[i];
      SCOPED_TRACE(file + " with " + block[0].file + ", " + block.back().file);
      const std::string json = to_json(reports[i]), words = to_text(file, reports[i]);
      const bool is_sound = sound == "sound" || (sound == "2.1-unsound" && s.is_v11());
      EXPECT_THAT(json, HasSubstr("\"kind\": \"" + kind + "\""));
      EXPECT_THAT(json, HasSubstr(is_sound ? "\"sound\": true" : "\"sound\": false"));
      std::string expected;
      std::istringstream pairs(relations);
      for (std::string pair; pairs >> pair;) {
        const std::size_t equals = pair.find('=');
        std::string other = pair.substr(0, equals), as = pair.substr(equals + 1);
        expected += (expected.empty() ? "" : ", ") + (R"({"file": ")" + other) + R"(", "as": ")" +
                    as + R"("})";
        std::ranges::replace(as, '-', ' ');
        if (as == "stage2 key") as = "stage-2 key";
        EXPECT_THAT(words, HasSubstr(other + " (" + as + ")\n"));
      }
      EXPECT_THAT(json, HasSubstr("\"goes_with\": [" + expected + "]"));
    }
  }
}

}  // namespace
