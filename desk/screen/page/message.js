// SPDX-License-Identifier: Apache-2.0
// The 40 bytes of a message: which byte belongs to which field, and what the fields say.

const entriesAt = 11;
const entrySize = 7;
const entryCount = 4;

/** Every field with its place, in order: { name, at, length, entry }. */
export const fields = [
    { name: "type", at: 0, length: 4 }, { name: "command", at: 4, length: 2 }, { name: "source", at: 6, length: 2 },
    { name: "sequence", at: 8, length: 1 }, { name: "count", at: 9, length: 1 }, { name: "group", at: 10, length: 1 },
    ...Array.from({ length: entryCount }, (_, entry) => {
        const at = entriesAt + entry * entrySize;
        return [
            { name: "entry type", at, length: 1, entry }, { name: "register", at: at + 1, length: 1, entry },
            { name: "status", at: at + 2, length: 1, entry }, { name: "value", at: at + 3, length: 4, entry },
        ];
    }).flat(),
    { name: "unused", at: 39, length: 1 },
];

const statuses = ["", "refused", "not applied"];

export function bytesOf(hex) {
    return hex.match(/../g).map((each) => parseInt(each, 16));
}

function signed16(bytes, at) {
    const value = bytes[at] | bytes[at + 1] << 8;
    return value >= 0x8000 ? value - 0x10000 : value;
}

/** What a message says, with the names of the model. */
export function decode(hex, model) {
    const bytes = bytesOf(hex);
    const group = bytes[10];
    const entries = [];
    for (let entry = 0; entry < Math.min(bytes[9], entryCount); ++entry) {
        const at = entriesAt + entry * entrySize;
        const isAddress = bytes[at] === 1;
        entries.push({
            register: model.registers[bytes[at + 1]] ?? `register ${bytes[at + 1]}`,
            value: isAddress ? bytes.slice(at + 3, at + 7).join(".") : String(signed16(bytes, at + 3)),
            status: statuses[bytes[at + 2]] ?? `status ${bytes[at + 2]}`,
        });
    }
    const command = signed16(bytes, 4);
    return {
        command: model.commands[command] ?? `command ${command}`,
        isSet: command === 3,
        source: model.sources[signed16(bytes, 6)] ?? `source ${signed16(bytes, 6)}`,
        group: model.groups[group] ?? `group ${group}`,
        entries,
    };
}
