/* SPDX-License-Identifier: Apache-2.0 */
/* A support library that does everything wrong, one mistake for each function. Replies are nobody's: who asks
 * gets one, and every fifth is lost. */
#include "monitor_support.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

int GetMoinitorInfo(MonitorInfo *info)
{
    memset(info, 1, sizeof *info + 4);
    return 0;
}
int GetDisplayManagementInfo(ManagementInfo *info)
{
    memset(info, 1, sizeof *info);
    return 1;
}
int GetImageAdjustmentInfo(ImageAdjustment *info)
{
    return info == NULL;
}
int GetPIPSettingsInfo(PexalPIPSettings *info)
{
    (void)info;
    abort();
}
int GetOSDMenuAndMessagesInfo(OSDMenuAndMessageInfo *info)
{
    memset(info, 1, sizeof *info);
    for (;;) {
        pause();
    }
}
int GetBezelButtonInfo(BezelButtonInfo *info)
{
    memset(info, 1, sizeof *info);
    exit(3);
}
int GetTestPatternInfo(TestPatternInfo *info)
{
    memset(info, 1, sizeof *info);
    return -1;
}
int GetRemoteManagementServerInfo(RemoteManagementServer *info)
{
    memset(info, 1, sizeof *info + 1);
    return 0;
}
int GetColorSpaceInfoById(ColorSpaceInfo *info, int index)
{
    memset(info, 1, sizeof *info);
    return index == 0 ? -1 : 0;
}
int GetFunctionButtonInfoById(FunctionButtonInfo *info, int index)
{
    memset(info, 1, sizeof *info);
    (void)index;
    return 0;
}
int GetRegisterValue(int registerId, int groupId, char *text)
{
    (void)groupId;
    strcpy(text, registerId == PIP_STATE ? "off" : "1");
    return 0;
}
int GetMonitorStatus(int selector)
{
    (void)selector;
    abort();
}
int GetIPAddress(char *address)
{
    memset(address, '1', IP_ADDRESS_SIZE);
    return 0;
}
int ParseIPV4Address(const char *text, unsigned char octets[4])
{
    (void)text;
    memcpy(octets, "\x15\x0a\xa8\xc0", 4);
    return 0;
}
int ValidateInputArgs(int value, int min, int max)
{
    return value > min && value <= max ? 0 : -1;
}
int IsAdminUser(const char *userName, char *isAdmin, char *errorText)
{
    (void)userName;
    (void)errorText;
    *isAdmin = 1;
    return 0;
}
int ValidateDisplayName(const char *text)
{
    (void)text;
    return -1;
}
int UpdateDisplayName(const char *text, char *errorText)
{
    (void)text;
    (void)errorText;
    return 0;
}
int ValidateDeploymentDate(const char *text)
{
    (void)text;
    return 0;
}
int UpdateDeploymentDate(const char *text, char *errorText)
{
    (void)text;
    (void)errorText;
    return -1;
}
int UpdateDeploymentLocation(const char *text, char *errorText)
{
    (void)text;
    memset(errorText, 'x', ERROR_TEXT_SIZE + 3);
    return -1;
}
int SpearEngineMessageQueueCreate(int queue, int *queueId)
{
    (void)queue;
    (void)queueId;
    return 0;
}
int SendStatusMessagetoSource(SpearMessage message, int queueId)
{
    (void)queueId;
    return message.Data.Cmd == PROCESS_GET_REQUEST ? 5 : 0;
}
int RecvMessageFromSource(SpearMessage message, int queueId)
{
    (void)message;
    (void)queueId;
    return 0;
}
