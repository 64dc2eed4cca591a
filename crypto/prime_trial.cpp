#include "crypto/prime_trial.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "crypto/bn.h"

namespace sealwright {

namespace {

// One pass over the number takes its remainders by several products of primes, each as long as a
// machine word, side by side; what is left then fits a word.
#if defined(__SIZEOF_INT128__)
using Unit = Limb;
using DoubleUnit = DoubleLimb;
#else
using Unit = Digit;
using DoubleUnit = DoubleDigit;
#endif
constexpr int unit_bits = 8 * sizeof(Unit);
constexpr std::uint32_t digits_per_unit = sizeof(Unit) / digit_bytes;
constexpr std::size_t groups_at_once = 4;  // hides the latency of one division behind the others

constexpr std::uint32_t bound_factor = 16;
constexpr std::uint32_t max_bound = 1U << 14;

constexpr std::size_t prime_count = 1899;  // odd primes below max_bound
constexpr auto primes = [] {
  std::array<std::uint16_t, prime_count> list = {};
  std::array<bool, max_bound> is_composite = {};
  std::size_t count = 0;
  for (std::uint32_t n = 3; n < max_bound; n += 2) {
    if (is_composite[n]) continue;
    list[count++] = static_cast<std::uint16_t>(n);
    for (std::uint32_t multiple = n * n; multiple < max_bound; multiple += 2 * n) {
      is_composite[multiple] = true;
    }
  }
  return list;
}();
static_assert(primes.back() != 0);

/// Consecutive primes whose product fits a unit: one long division serves them all, since a prime
/// that divides the product divides a number exactly if it divides its remainder by the product.
/// With units of 64 bits the first group is 3 * 5 * ... * 53 = 16294579238595022365. The number
/// 2^64 + 5 leaves 2152164835114529256 there; 3 divides that, and so the number as well.
struct Group {
  Unit divisor;     // the product, shifted left until its top bit is set
  Unit reciprocal;  // floor((2^(2 unit_bits) - 1) / divisor) - 2^unit_bits
  std::uint16_t first;
  std::uint16_t count;
};

constexpr Group make_group(std::size_t first) {
  Unit product = 1;
  std::size_t end = first;
  while (end < prime_count && product <= ~Unit{0} / primes[end]) product *= primes[end++];
  const Unit divisor = product << std::countl_zero(product);
  const DoubleUnit ones = ~DoubleUnit{0};
  return {divisor, static_cast<Unit>(ones / divisor), static_cast<std::uint16_t>(first),
          static_cast<std::uint16_t>(end - first)};
}

constexpr std::size_t group_count = [] {
  std::size_t count = 0;
  for (std::size_t first = 0; first < prime_count; ++count) first += make_group(first).count;
  return count;
}();
/// The last groups have no primes and fill up the last pass.
constexpr auto groups = [] {
  std::array<Group, (group_count + groups_at_once - 1) / groups_at_once* groups_at_once> list = {};
  std::size_t first = 0;
  for (Group& group : list) {
    group = make_group(first);
    first += group.count;
  }
  return list;
}();

/// (remainder * 2^unit_bits + next) mod the group's divisor (Moeller and Granlund, "Improved
/// division by invariant integers", algorithm 4).
Unit divide_step(Unit remainder, Unit next, const Group& group) {
  const DoubleUnit estimate =
      DoubleUnit{group.reciprocal} * remainder + ((DoubleUnit{remainder} << unit_bits) | next);
  const auto quotient = static_cast<Unit>(estimate >> unit_bits) + 1;
  Unit result = next - quotient * group.divisor;
  // One time in two, so without a branch; the other correction is rare.
  const Unit too_large = result > static_cast<Unit>(estimate) ? ~Unit{0} : 0;
  result += group.divisor & too_large;
  return result >= group.divisor ? result - group.divisor : result;
}

bool divides(Unit remainder, const Group& group) {
  return std::any_of(primes.begin() + group.first, primes.begin() + group.first + group.count,
                     [&](Unit prime) { return remainder % prime == 0; });
}

/// Whether a prime of the four groups from `first` on divides the number.
bool has_factor_in(const Group* first, const Digit* number, std::uint32_t digit_count) {
  Unit remainders[groups_at_once] = {};
  for (std::uint32_t i = (digit_count + digits_per_unit - 1) / digits_per_unit; i > 0; --i) {
    const std::uint32_t at = digits_per_unit * (i - 1);
    Unit unit = 0;
    std::memcpy(&unit, number + at, digit_bytes * std::min(digits_per_unit, digit_count - at));
    for (std::size_t k = 0; k < groups_at_once; ++k) {
      remainders[k] = divide_step(remainders[k], unit, first[k]);
    }
  }
  for (std::size_t k = 0; k < groups_at_once; ++k) {
    if (divides(remainders[k], first[k])) return true;
  }
  return false;
}

}  // namespace

std::uint32_t trial_division_bound(std::uint32_t digit_count) {
  return std::min(max_bound, bound_factor * digit_count * digit_count);
}

bool has_small_factor(const Digit* number, std::uint32_t digit_count) {
  if (bn_significant_digits(number, digit_count) <= 1) return false;  // may be a prime of the table
  const std::uint32_t bound = trial_division_bound(digit_count);
  for (std::size_t i = 0; i < groups.size() && primes[groups[i].first] < bound;
       i += groups_at_once) {
    if (has_factor_in(&groups[i], number, digit_count)) return true;
  }
  return false;
}

}  // namespace sealwright
