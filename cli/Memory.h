#pragma once

/** Suits the process's memory to a program that runs one command: to be called first. */
void PrepareMemory();
