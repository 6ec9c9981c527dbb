#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovel {

// WebKit's content filter compiler rejects alternation ("|") in a rule's "url-filter". This
// rewrites a rule list so WebKit accepts it: a rule whose url-filter holds alternations becomes
// one rule per alternative, with the same action and the other trigger keys kept. Rules
// without alternation, and rules whose alternation cannot be spelled out (a group under a
// quantifier or a look-around), pass unchanged. Text that is not a JSON array is returned as it
// is, for the compiler to reject.
std::string expandUrlFilterAlternations(std::string_view ruleListJson);

// The plain patterns that together match what `pattern` matches: "(a|b)\.com" gives "a\.com"
// and "b\.com". None when the pattern's alternation cannot be spelled out this way, or would
// give more than `limit` patterns.
std::optional<std::vector<std::string>> expandAlternations(std::string_view pattern,
                                                           std::size_t limit = 1024);

} // namespace ovel
