#pragma once

#include <string>
#include <string_view>

/** @return what XMLProof says of a text and does not hold, for a second reader or after reading it; "" when all holds
 */
std::string FindFalseProof(std::string_view strText);
