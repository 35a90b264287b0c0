// How errors name a JSON value: where it stands and what it is.
#pragma once

#include <string>
#include <string_view>

#include "core/json.h"

namespace zorvan::json {

// "LINE:COLUMN" of a place, both counted from 1; columns in bytes.
std::string LineAndColumn(std::string_view text, uint32_t place);

// Pointer to a value of the document, as in "/root/children/3"; "/" for the root.
std::string PathOf(Document const& document, Value const& value);

// The value in a few words, or a short one as it stands in the document's text.
std::string Describe(Document const& document, std::string_view text, Value const& value);

}  // namespace zorvan::json
