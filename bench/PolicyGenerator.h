#pragma once

#include <string>

/** Makes policy documents of any size for the benchmarks. */
namespace PolicyGenerator {

/**
 * @param iItems number of expressions, of keyword lists (20 keywords each) and of templates (3 rules each)
 * @return a document of the standard layout, UTF-8, without a language; the same for the same number
 */
std::string Make(int iItems);

}  // namespace PolicyGenerator
