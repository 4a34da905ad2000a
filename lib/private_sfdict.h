// private_sfdict.h (private): names for the operations of sf_dictext().
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_SFDICT_H
#define TOVAN_PRIVATE_SFDICT_H

namespace [[gnu::visibility("hidden")]] tovan {

constexpr int sf_set = 0;
constexpr int sf_set_if_undefined = 1;
constexpr int sf_unset = 2;
constexpr int sf_set_if_empty = 3;
constexpr int sf_append = 4;
constexpr int sf_unset_if_empty = 5;

}  // namespace tovan

#endif
