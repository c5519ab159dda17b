// SPDX-License-Identifier: Apache-2.0
// For modules that write several registers in one request with values that nobody has checked yet; no class
// of the library does so today.
#ifndef ENGINE_REGISTER_BATCH_H
#define ENGINE_REGISTER_BATCH_H

/** Checks a value against the permitted range of a register. Returns 0 when it may be written, else -1, with
 * the register's text in `errorText` (ERROR_TEXT_SIZE characters) where it has one. */
[[nodiscard]] int ValidateRegisterValue(int registerId, int value, char *errorText);

/** Writes a batch of `count` registers after checking each with ValidateRegisterValue; a negative identifier
 * is passed over. Returns 0 when the engine's reply was received, else -1 with `errorText` filled. */
[[nodiscard]] int InvokeMethod_Spear(const int *registerIds, const int *registerValues, int groupId,
                                     int count, char *errorText);

#endif
