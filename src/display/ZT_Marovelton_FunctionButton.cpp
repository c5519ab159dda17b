// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_FunctionButton: the four programmable function buttons, one instance each, with the action
// that is assigned to each and the method that assigns another.

#include "display/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_FunctionButton";
constexpr const char *_InstanceID = "ZT:Marovelton_FunctionButton:%d";

constexpr RegisterId buttonRegisters[] = {FUNCTION_BUTTON_F1, FUNCTION_BUTTON_F2, FUNCTION_BUTTON_F3,
                                          FUNCTION_BUTTON_F4};
constexpr int buttonCount = std::size(buttonRegisters);

int ValidateFunctionButtonInstanceID(const char *instanceID, char *errorText, int *index)
{
    return matchInstanceID(instanceID, _InstanceID, buttonCount, errorText, index);
}

int SetButtonSetting(int value, int registerId, char *errorText)
{
    return sendSetting(FUNCTION_BTN_ID, {{registerId, value}}, {"Failed to set the value to button setting."},
                       errorText);
}

STAMP_PATH_BY_NUMBER(ZT_Marovelton_FunctionButton)

CMPIInstance *_makeInst_ZT_Marovelton_FunctionButton(const CMPIObjectPath *reference, int index,
                                                     CMPIStatus *status)
{
    const InstanceID instanceID(_InstanceID, index);
    FunctionButtonInfo info = {};
    InstanceBuilder button(_broker, _ClassName,
                           newPath(_broker, _ClassName, reference, status, {{"InstanceID", instanceID.text}}),
                           status);
    if (!button || !button.require(GetFunctionButtonInfoById(&info, index) == 0,
                                   "Failed to get Function Button information from database.")) {
        return nullptr;
    }

    button.field("Name", info.Name);
    button.uint16Array("Setting", {info.Setting});
    button.describe(
        instanceID.text,
        "A class derived from Logical Element that represents the single node container of the Display Managemet System.");
    return button.finish();
}

// ---- methods ----

static bool runSetSetting(Call &call)
{
    int setting = 0;
    // Clients know an unknown button by the failed code here, unlike in GetInstance.
    if (ValidateFunctionButtonInstanceID(call.key, call.errorText, &call.index) != 0) {
        return fail(call, CMPI_RC_ERR_FAILED, call.errorText);
    }
    return readArgument(call, {integer, "Setting", "Invalid parameter."}, &setting) &&
           requireRange(call, setting,
                        {1, 17, "Invalid input value range. Valid values are between 1 and 17."}) &&
           settled(call, SetButtonSetting(setting, buttonRegisters[call.index], call.errorText));
}

constexpr Method methods[] = {
    {.name = "SetSetting", .run = runSetSetting},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(
    ZT_Marovelton_FunctionButton, .key = {.name = "InstanceID", .validate = ValidateFunctionButtonInstanceID},
    .reads = {.count = buttonCount}, .methods = methods,
    .refusals = {.checkKeyValue = false, .unknownMethodValue = 0, .missingKeyValue = 1})
