// SPDX-License-Identifier: Apache-2.0
#include "constant_seam.h"

#include <monitor_support.h>

#include <cstring>
#include <initializer_list>

long bench::messagesSent = 0;

namespace
{

template <typename Record>
int fill(Record *record)
{
    *record = Record{};
    return SUCCESS;
}

} // namespace

int GetMoinitorInfo(MonitorInfo *info)
{
    fill(info);
    std::strcpy(info->DisplayName, "Studio 7");
    return SUCCESS;
}

int GetMonitorStatus(int)
{
    return FREE;
}

int SpearEngineMessageQueueCreate(int queue, int *queueId)
{
    *queueId = queue;
    return SUCCESS;
}

int SendStatusMessagetoSource(SpearMessage, int)
{
    ++bench::messagesSent;
    return SUCCESS;
}

int RecvMessageFromSource(SpearMessage, int)
{
    return SUCCESS;
}

int GetRegisterValue(int, int, char *text)
{
    std::strcpy(text, "0");
    return SUCCESS;
}

int GetDisplayManagementInfo(ManagementInfo *info)
{
    return fill(info);
}

int GetImageAdjustmentInfo(ImageAdjustment *info)
{
    return fill(info);
}

int GetPIPSettingsInfo(PexalPIPSettings *info)
{
    return fill(info);
}

int GetOSDMenuAndMessagesInfo(OSDMenuAndMessageInfo *info)
{
    return fill(info);
}

int GetColorSpaceInfoById(ColorSpaceInfo *info, int index)
{
    fill(info);
    info->ActiveColorSpace = index;
    info->DisplayLuminance = 100;
    std::strcpy(info->ColorSpaceName, "Rec. 709");
    for (auto *coordinate :
         {&info->RedPrimaryX, &info->GreenPrimaryX, &info->BluePrimaryX, &info->WhitePointX}) {
        std::strcpy(*coordinate, "0.3127");
    }
    return SUCCESS;
}

int GetBezelButtonInfo(BezelButtonInfo *info)
{
    return fill(info);
}

int GetFunctionButtonInfoById(FunctionButtonInfo *info, int)
{
    return fill(info);
}

int GetTestPatternInfo(TestPatternInfo *info)
{
    return fill(info);
}

int GetRemoteManagementServerInfo(RemoteManagementServer *info)
{
    return fill(info);
}

int GetIPAddress(char *address)
{
    std::strcpy(address, "192.0.2.17");
    return SUCCESS;
}

int ParseIPV4Address(const char *, unsigned char octets[4])
{
    std::memset(octets, 0, 4);
    return SUCCESS;
}

int ValidateInputArgs(int value, int min, int max)
{
    return value >= min && value <= max ? SUCCESS : FAILURE;
}

int IsAdminUser(const char *, char *isAdmin, char *)
{
    *isAdmin = 1;
    return SUCCESS;
}

int ValidateDisplayName(const char *)
{
    return SUCCESS;
}

int UpdateDisplayName(const char *, char *)
{
    return SUCCESS;
}

int ValidateDeploymentDate(const char *)
{
    return SUCCESS;
}

int UpdateDeploymentDate(const char *, char *)
{
    return SUCCESS;
}

int UpdateDeploymentLocation(const char *, char *)
{
    return SUCCESS;
}

// The shell helper of the CMPI base package, which no call of the benchmark reaches.

extern "C" int runcommand(const char *, char **, char ***, char ***)
{
    return FAILURE;
}

extern "C" void freeresultbuf(char **) {}
