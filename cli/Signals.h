#pragma once

/**
 * Interruption. A first SIGINT or SIGTERM only sets a flag, which long work asks for at its steps, so that it can undo
 * what it did; a second one ends the program at once, which undoes an open unit of work as well. SIGHUP sets the
 * flag too, and never ends the program, since a terminal that goes may send several. A signal that whoever started the
 * program ignores (a script in the background, nohup) stays ignored.
 */
namespace Signals {

/** Thrown to leave work that was interrupted; no exception class, so that only who knows it takes it for one. */
struct SInterrupted {};

/** From now on signals set the flag, and a closed pipe is an error of the write instead of the program's end. */
void Watch();
/** @return whether a signal came */
bool IsCaught() noexcept;
/** @throws SInterrupted when a signal came */
void ThrowIfCaught();
/** @return 128 and the number of the signal that came; of SIGINT when none did */
int GetExitCode() noexcept;

}  // namespace Signals
