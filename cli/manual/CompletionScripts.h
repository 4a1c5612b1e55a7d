#pragma once

/** What each shell runs when a line that begins with the program's name is completed. They ask the program itself. */
namespace CompletionScript {

extern const char BASH[];
extern const char ZSH[];
extern const char FISH[];

}  // namespace CompletionScript
