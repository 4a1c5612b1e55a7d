#pragma once

#include <string_view>

/** What reads texts that others wrote. Each takes any bytes and ends the program when something does not hold. */
class CTempDir;

namespace Fuzz {

struct STarget {
    const char* pName;  ///< also that of its folder in corpus/
    void (*fnRun)(std::string_view strData);
};

/** A document that is taken is well-formed for a second reader too, which sees the same; what is exported is taken. */
void ImportDocument(std::string_view strData);
void ImportAssets(std::string_view strData);
/** What a quick look proves holds for a second reader, and after reading and writing. */
void ProveDocument(std::string_view strData);
/** The first line is a pattern, which is looked for in what follows; searching costs no more than their product. */
void Match(std::string_view strData);
/** What is written for a rule is read back as that rule. */
void ParseRule(std::string_view strData);
/** What is written for keywords is read back as those keywords. */
void ParseSubKeywords(std::string_view strData);
void ReadNameMap(std::string_view strData);
void ReadPolicyLists(std::string_view strData);
/**
 * A store's file, or changes of one that this library made: read, looked up, verified, written. What is read of a
 * changed one is what was kept in it.
 */
void OpenStore(std::string_view strData);
/** A dump as the tool reads it. */
void LoadDump(std::string_view strData);

/** All of them, by name. */
extern const STarget TARGETS[10];
/** @return null when there is none */
const STarget* FindTarget(std::string_view strName);

/** Ends the program with a word when something does not hold. */
void Require(bool bHolds, const char* pWhat);
/** One folder for all runs of the process. */
const CTempDir& Folder();

}  // namespace Fuzz
