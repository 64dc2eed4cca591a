#include "crypto/bn_limbs_x86.h"

#include "crypto/cpu.h"

#if CRYPTO_PATHS_X86

namespace sealwright {

namespace {

// One limb of a row in assembly, since compilers lose the carry flags between intrinsics. mulx
// takes the multiplier from rdx and leaves the flags alone, so two carry chains can run side by
// side: the carry flag (adcx) joins each low half to the high half before it, the overflow flag
// (adox) adds the sum to r. `high` and `next` change places from limb to limb.
#define ROW_LIMB(offset, low, high, next)       \
  "mulx " #offset "(%[a]), %[" low "], %[" next \
  "]\n\t"                                       \
  "adcx %[" high "], %[" low                    \
  "]\n\t"                                       \
  "adox " #offset "(%[r]), %[" low              \
  "]\n\t"                                       \
  "movq %[" low "], " #offset "(%[r])\n\t"
#define FOUR_LIMBS(o0, o1, o2, o3)     \
  ROW_LIMB(o0, "low0", "high", "next") \
  ROW_LIMB(o1, "low1", "next", "high") \
  ROW_LIMB(o2, "low0", "high", "next") ROW_LIMB(o3, "low1", "next", "high")
// Clears both flags first; both carries end in `high`, which is the carry limb in and out.
#define ROW(limbs)                                                                \
  __asm__ volatile("xorl %k[zero], %k[zero]\n\t" limbs                            \
                   "adcx %[zero], %[high]\n\t"                                    \
                   "adox %[zero], %[high]\n\t"                                    \
                   : [low0] "=&r"(low0), [low1] "=&r"(low1), [high] "+&r"(carry), \
                     [next] "=&r"(next), [zero] "=&r"(zero)                       \
                   : [a] "r"(a), [r] "r"(r), "d"(d)                               \
                   : "cc", "memory")

/// r[0..16) += a[0..16) * d + carry. @return the carry limb.
inline Limb sixteen_limbs(Limb* r, const Limb* a, Limb d, Limb carry) {
  Limb low0, low1, next, zero;
  ROW(FOUR_LIMBS(0, 8, 16, 24) FOUR_LIMBS(32, 40, 48, 56) FOUR_LIMBS(64, 72, 80, 88)
          FOUR_LIMBS(96, 104, 112, 120));
  return carry;
}

/// r[0..4) += a[0..4) * d + carry. @return the carry limb.
inline Limb four_limbs(Limb* r, const Limb* a, Limb d, Limb carry) {
  Limb low0, low1, next, zero;
  ROW(FOUR_LIMBS(0, 8, 16, 24));
  return carry;
}

}  // namespace

Limb mul_add_row_x86(Limb* r, const Limb* a, std::size_t n, Limb d) {
  Limb carry = 0;
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) carry = sixteen_limbs(r + i, a + i, d, carry);
  for (; i < n; i += 4) carry = four_limbs(r + i, a + i, d, carry);
  return carry;
}

void double_and_add_squares_x86(Limb* r, const Limb* a, std::size_t n) {
  // The carry flag shifts out of the doubling, the overflow flag out of the sum; both of them go on
  // as one number, which joins the next square.
  Limb carry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    Limb low, high, sum;
    __asm__ volatile(
        "mulx %%rdx, %[low], %[high]\n\t"
        "addq %[carry], %[low]\n\t"
        "adcq $0, %[high]\n\t"
        "xorl %k[carry], %k[carry]\n\t"
        "movq (%[r]), %[sum]\n\t"
        "adcx %[sum], %[sum]\n\t"
        "adox %[low], %[sum]\n\t"
        "movq %[sum], (%[r])\n\t"
        "movq 8(%[r]), %[sum]\n\t"
        "adcx %[sum], %[sum]\n\t"
        "adox %[high], %[sum]\n\t"
        "movq %[sum], 8(%[r])\n\t"
        "movl $0, %k[low]\n\t"
        "adcx %[low], %[carry]\n\t"
        "adox %[low], %[carry]\n\t"
        : [low] "=&r"(low), [high] "=&r"(high), [sum] "=&r"(sum), [carry] "+&r"(carry)
        : [r] "r"(r + 2 * i), "d"(a[i])
        : "cc", "memory");
  }
}

}  // namespace sealwright

#endif
