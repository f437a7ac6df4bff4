// Qt-utilities stand-in: sizing of chained hash tables.
#pragma once

// A bucket count, greater than 0, for a table that must hold `wanted` entries: half as large
// again, rounded up to an odd number.
unsigned qtl_hash_50_percent_increase_size(unsigned wanted);
