// key_quality [--keys N] [EARLIER]: makes N keys (2,000 unless told otherwise) of each size, checks
// each, and prints how often their primes fall into each class: by their top bits and by their
// remainders modulo 3, 5 and 7. Each distribution is held by a chi-square against the one that the
// drawing rule gives, and with EARLIER, the output of another build, against that build's counts.
//
// Exits with 1 when a key is bad or a chi-square passes what chance does once in 10,000 times.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "crypto/bn_mod.h"
#include "crypto/rsa_keygen.h"

namespace {

using Counts = std::vector<double>;
using Distributions = std::map<std::string, Counts>;

constexpr std::size_t top_classes = 16;  // by the four bits below the top bit, which is set
constexpr double simulated_pairs = 4e6;
bool all_well = true;

std::size_t top_class(Digit top) {
  return (top >> 27) % top_classes;
}

/// e * d = 1 mod (p - 1)(q - 1), p * q = n, n full-length and p the larger prime.
bool is_sound(const ZEB_RSA_PRIVATE_KEY& key) {
  ZEB_RSA_PRIVATE_KEY less = key;
  less.p[0] -= 1;
  less.q[0] -= 1;
  Digit phi[rsa_number_capacity] = {};
  Digit n[rsa_number_capacity] = {};
  Digit product[bn_scratch_digits] = {};
  zeb_bn_Mul(phi, less.p, key.pWords, less.q, key.qWords);
  zeb_bn_Mul(n, key.p, key.pWords, key.q, key.qWords);
  zeb_bn_Mul(product, key.d, key.nWords, key.e, 1);
  sealwright::bn_reduce_exactly(product, key.nWords + 1, phi, key.nWords);
  return product[0] == 1 && sealwright::bn_significant_digits(product, key.nWords) == 1 &&
         zeb_bn_cmp(n, key.nWords, key.n, key.nWords) == 0 &&
         (key.n[key.nWords - 1] & digit_top_bit) != 0 &&
         zeb_bn_cmp(key.p, key.pWords, key.q, key.qWords) > 0;
}

void count_key(Distributions& counts, const std::string& size, const ZEB_RSA_PRIVATE_KEY& key) {
  const auto tally = [&](const std::string& name, std::size_t classes, std::size_t its) {
    Counts& list = counts[size + name];
    list.resize(classes);
    ++list[its];
  };
  tally("_p_top", top_classes, top_class(key.p[key.pWords - 1]));
  tally("_q_top", top_classes, top_class(key.q[key.qWords - 1]));
  for (const Digit modulus : {3U, 5U, 7U}) {
    tally("_p_mod_" + std::to_string(modulus), modulus, bn_ModD(key.p, key.pWords, modulus));
    tally("_q_mod_" + std::to_string(modulus), modulus, bn_ModD(key.q, key.qWords, modulus));
  }
}

/// The rule for a pair of top digits: the smaller is drawn again until the product has its top bit
/// set, and the larger one is p's.
void simulate_top_digits(Counts& p, Counts& q) {
  std::mt19937_64 engine(1);
  const auto draw = [&] { return static_cast<Digit>(engine()) | digit_top_bit; };
  p.assign(top_classes, 0);
  q.assign(top_classes, 0);
  for (double i = 0; i < simulated_pairs; ++i) {
    Digit a = draw();
    Digit b = draw();
    while ((DoubleDigit{a} * b >> 63) == 0) (a < b ? a : b) = draw();
    ++p[top_class(std::max(a, b))];
    ++q[top_class(std::min(a, b))];
  }
}

Distributions expected_distributions() {
  Distributions expected;
  for (const std::string size : {"1024", "2048"}) {
    simulate_top_digits(expected[size + "_p_top"], expected[size + "_q_top"]);
    for (const std::string prime : {"_p_mod_", "_q_mod_"}) {
      // No remainder 0, and for e = 3 no remainder 1 modulo 3.
      expected[size + prime + "3"] = size == "2048" ? Counts{0, 0, 1} : Counts{0, 1, 1};
      expected[size + prime + "5"] = {0, 1, 1, 1, 1};
      expected[size + prime + "7"] = {0, 1, 1, 1, 1, 1, 1};
    }
  }
  return expected;
}

/// Chi-square of two samples, or of one against a far larger one.
void compare(const char* with, const std::string& name, const Counts& a, const Counts& b) {
  double total_a = 0;
  double total_b = 0;
  for (const double count : a) total_a += count;
  for (const double count : b) total_b += count;
  const bool is_sample = total_b > 100 && total_b < simulated_pairs;
  const double share = is_sample ? std::sqrt(total_b / total_a) : 0;
  double chi = 0;
  double classes = 0;
  bool impossible = false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] == 0 && b[i] == 0) continue;
    ++classes;
    const double model = b[i] * total_a / total_b;
    impossible = impossible || (!is_sample && model == 0);
    const double deviation = is_sample ? share * a[i] - b[i] / share : a[i] - model;
    chi += deviation * deviation / (is_sample ? a[i] + b[i] : model);
  }
  // Wilson and Hilferty: the cube root of chi-square over its degrees of freedom is nearly normal.
  const double degrees = std::max(classes - 1, 1.0);
  const double spread = 2 / (9 * degrees);
  const double deviations = (std::cbrt(chi / degrees) - (1 - spread)) / std::sqrt(spread);
  const bool bad = impossible || (classes > 1 && deviations > 3.72);
  all_well = all_well && !bad;
  std::printf("# %s, %s: chi-square %.1f with %.0f degrees of freedom%s\n", name.c_str(), with, chi,
              classes - 1, bad ? ": FAR OFF" : "");
}

Distributions read_counts(const char* file) {
  Distributions counts;
  std::ifstream in(file);
  for (std::string name; in >> name;) {
    std::string rest;
    std::getline(in, rest);
    if (name == "#") continue;
    char* next = rest.data();
    for (char* end = nullptr;; next = end) {
      const double count = std::strtod(next, &end);
      if (end == next) break;
      counts[name].push_back(count);
    }
  }
  return counts;
}

}  // namespace

int main(int argc, char** argv) {
  int keys = 2000;
  const char* earlier = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--keys") == 0 && i + 1 < argc) {
      keys = std::atoi(argv[++i]);
    } else {
      earlier = argv[i];
    }
  }
  Distributions counts;
  for (const std::uint32_t bits : {1024U, 2048U}) {
    int bad = 0;
    for (int i = 0; i < keys; ++i) {
      ZEB_RSA_PRIVATE_KEY key = {};
      key.e[0] = bits == 1024 ? 65537 : 3;
      key.eWords = 1;
      if (ZEB_RSA_KeyGen(&key, bits) != ZEB_SUCCESS || !is_sound(key)) ++bad;
      count_key(counts, std::to_string(bits), key);
    }
    all_well = all_well && bad == 0;
    std::printf("# %u bits: %d keys, %d of them bad\n", bits, keys, bad);
  }
  for (const auto& [name, list] : counts) {
    std::printf("%s", name.c_str());
    for (const double count : list) std::printf(" %.0f", count);
    std::printf("\n");
  }
  const Distributions expected = expected_distributions();
  const Distributions before = earlier != nullptr ? read_counts(earlier) : Distributions();
  for (const auto& [name, list] : counts) {
    compare("by the rule", name, list, expected.at(name));
    if (before.contains(name)) compare("by the other build", name, list, before.at(name));
  }
  return all_well ? 0 : 1;
}
