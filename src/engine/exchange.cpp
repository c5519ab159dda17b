// SPDX-License-Identifier: Apache-2.0
#include "engine/exchange.h"

namespace engine
{

SpearMessage engineRequest(int command, int groupId)
{
    SpearMessage message = {};
    message.Type = 1;
    message.Data.Cmd = static_cast<int16_t>(command);
    message.Data.Source = WSMAN;
    message.Data.Arg.sWebCmd.GroupId = static_cast<uint8_t>(groupId);
    return message;
}

SpearMessage setRequest(int groupId, std::initializer_list<RegisterWrite> writes)
{
    SpearMessage message = engineRequest(PROCESS_SET_REQUEST, groupId);
    WebCmd &command = message.Data.Arg.sWebCmd;
    for (const RegisterWrite &write : writes) {
        if (command.Count == REGISTERS_PER_MESSAGE) {
            break;
        }
        RegisterDetails &entry = command.sRegdetails[command.Count++];
        entry.Register = static_cast<uint8_t>(write.registerId);
        entry.RegisterValue.Value = static_cast<int16_t>(write.value);
    }
    return message;
}

bool engineIsBusy(const char *busyText, char *errorText)
{
    if (GetMonitorStatus(SPEAR_STATE) != BUSY) {
        return false;
    }
    copyText(errorText, ERROR_TEXT_SIZE, busyText);
    return true;
}

int exchange(const SpearMessage &message, const ChannelTexts &texts, char *errorText)
{
    const auto failed = [&texts](int result) { return texts.onlyMinusOneFails ? result == -1 : result != 0; };
    const auto fail = [errorText](const char *text) {
        copyText(errorText, ERROR_TEXT_SIZE, text);
        return -1;
    };

    int queueId = -1;
    if (failed(SpearEngineMessageQueueCreate(MSG_QUEUE_SPEAR_APP, &queueId))) {
        return fail(texts.sendQueue);
    }
    const int sent = SendStatusMessagetoSource(message, queueId);
    if (texts.send && failed(sent)) {
        return fail(texts.send);
    }
    if (!texts.reply) {
        return 0;
    }

    queueId = -1;
    if (failed(SpearEngineMessageQueueCreate(MSG_QUEUE_WSMAN, &queueId))) {
        return fail(texts.receiveQueue);
    }
    const SpearMessage reply = {};
    return RecvMessageFromSource(reply, queueId) == 0 ? 0 : fail(texts.reply);
}

int sendSetting(int groupId, std::initializer_list<RegisterWrite> writes, const ChannelTexts &texts,
                char *errorText)
{
    return engineIsBusy(texts.busy, errorText) ? -1 : exchange(setRequest(groupId, writes), texts, errorText);
}

int readRegister(int registerId, int groupId, int *value)
{
    char text[REGISTER_TEXT_SIZE + 1] = " ";
    const int result = GetRegisterValue(registerId, groupId, text);
    text[REGISTER_TEXT_SIZE] = '\0';
    *value = decimalValue(text);
    return result;
}

} // namespace engine

int InvokeGetMethod_Spear(int groupId, char *errorText)
{
    static constexpr engine::ChannelTexts texts = {
        .reply = "Failed to read the value from spear.",
        .busy = "Device is Busy. Please try after some time..", // two full stops, unlike a write
    };
    if (engine::engineIsBusy(texts.busy, errorText)) {
        return -1;
    }
    return engine::exchange(engine::engineRequest(PROCESS_GET_REQUEST, groupId), texts, errorText);
}
