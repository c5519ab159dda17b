// SPDX-License-Identifier: Apache-2.0
// The IPv4 endpoints of the network interfaces, as the shell tools of the controller print them.
#ifndef ZT_MAROVELTON_IPPROTOCOLENDPOINT_H
#define ZT_MAROVELTON_IPPROTOCOLENDPOINT_H

#include <cstdint>

/** One endpoint. The texts are on the heap; address and mask are null where none is known. */
struct cim_ipProtocolEndpoint {
    char *name;       // "IPv4_" and the interface name
    char *address;    // as ifconfig prints it
    char *subnetmask; // as ifconfig prints it
    uint16_t enabled; // 2 enabled, 3 disabled, 0 unknown
    uint16_t type;    // 2: IPv4
    uint16_t version; // 1: IPv4 only
};

/** A list of endpoints; each node owns its record. */
struct ipPEndpointList {
    cim_ipProtocolEndpoint *sptr;
    ipPEndpointList *next;
};

/** Frees a record and its texts; null is nothing to free. */
void free_ipProtocolEndpoint(cim_ipProtocolEndpoint *record);
/** Frees a list with all its records. */
void free_ipPEndpointList(ipPEndpointList *list);

/** The endpoint name of an interface, to be freed by the caller; null without memory. */
[[nodiscard]] char *_get_ipProtocolEndpoint_name(const char *ifName);
/** The link state of an interface: 2 up, 3 down, 0 unknown. */
uint16_t _get_port_status(const char *ifName);
/** Fills the record of a node for the endpoint of that name; without memory it stays empty. Returns 0. */
int _ipProtocolEndpoint_data(const char *endpointName, ipPEndpointList *node);
/** Lists the endpoints of all interfaces that the kernel knows, in its order; freed by the caller. Returns 0,
 * or the result of the command when it printed nothing. */
[[nodiscard]] int enum_all_ipProtocolEndpoints(ipPEndpointList **list);
/** Finds the endpoint of exactly that name; null when there is none, freed by the caller. Returns 0, or -1
 * when the endpoints cannot be listed. */
[[nodiscard]] int get_ipProtocolEndpoint_data(const char *endpointName, cim_ipProtocolEndpoint **record);

// The shell helper of the CMPI base package: runs a command, gives null-terminated arrays of its output
// lines, each with its newline, and returns its exit status.
extern "C" int runcommand(const char *command, char **input, char ***out, char ***err);
extern "C" void freeresultbuf(char **lines);

#endif
