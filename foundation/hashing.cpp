#include "foundation/hashing.h"

#include <cstring>

namespace {

constexpr unsigned kLargestPrime = 4294967291U;

bool is_prime(unsigned candidate) {
  if (candidate < 4) return candidate >= 2;
  if (candidate % 2 == 0) return false;
  for (unsigned divisor = 3; divisor <= candidate / divisor; divisor += 2) {
    if (candidate % divisor == 0) return false;
  }
  return true;
}

unsigned sign_extended(char character) { return static_cast<unsigned>(static_cast<signed char>(character)); }

}  // namespace

unsigned QZ_recommended_hash_size(unsigned requested) {
  if (requested >= kLargestPrime) return kLargestPrime;
  unsigned size = requested;
  while (!is_prime(size)) ++size;
  return size;
}

unsigned QZ_hash(const qz_String& key, unsigned size) {
  // FNV-1a up to the terminator: keys are equal when they compare equal up to there.
  unsigned hash = 2166136261U;
  for (const char* character = key.c_str(); *character != '\0'; ++character) {
    hash = (hash ^ static_cast<unsigned char>(*character)) * 16777619U;
  }
  return hash % size;
}

unsigned QZ_hash(unsigned key, unsigned size) { return key % size; }

unsigned my_hashcode(const char* text) { return my_hashcode(text, static_cast<unsigned>(std::strlen(text))); }

unsigned my_hashcode(const char* text, unsigned length) {
  unsigned hash = 0;
  if (length <= 15) {
    for (unsigned i = 0; i < length; ++i) hash = hash * 37 + sign_extended(text[i]);
    return hash;
  }
  const unsigned step = length / 8;
  for (unsigned long long i = 0; i < length; i += step) hash = hash * 39 + sign_extended(text[i]);
  return hash;
}
