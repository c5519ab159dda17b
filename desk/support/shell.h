// SPDX-License-Identifier: Apache-2.0
// Stand-in of the shell helper of libcmpiOSBase_Common, for systems that do not have that library.
#ifndef DESK_SUPPORT_SHELL_H
#define DESK_SUPPORT_SHELL_H

#ifdef __cplusplus
extern "C" {
#endif

/** Runs a command with the shell (sh -c) and waits for its end.
 *
 * input: lines for the command's standard input, null-terminated array; null for none.
 * out, err: receive null-terminated arrays of the lines of standard output and standard error, each with its
 * newline where it had one; to be freed with freeresultbuf. Either may be null: that output is dropped.
 *
 * Returns the command's exit status, 128 + signal when a signal ended it, -1 when it could not be run (the
 * arrays are then null), and -1 also in a process that ignores SIGCHLD, to which the system tells no status.
 * At most 16 MiB of each output are kept.
 *
 * A command that takes longer than 30 seconds, or than DESK_SHELL_TIMEOUT says, is killed with all that it
 * has started in its process group: -1, and null arrays. */
int runcommand(const char *command, char **input, char ***out, char ***err);

/** Frees an array that runcommand handed out; null is allowed. */
void freeresultbuf(char **lines);

#ifdef __cplusplus
}
#endif

#endif
