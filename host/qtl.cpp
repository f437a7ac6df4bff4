#include "qtl.h"

#include <limits>

unsigned qtl_hash_50_percent_increase_size(unsigned wanted) {
  constexpr unsigned max_buckets = std::numeric_limits<unsigned>::max() / 2;
  if (wanted >= max_buckets / 3 * 2) return max_buckets | 1U;
  const unsigned grown = wanted + wanted / 2;
  return grown | 1U;
}
