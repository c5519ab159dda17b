// SPDX-License-Identifier: Apache-2.0
#include "session/session.h"

#include "model/values.h"
#include "session/outcome.h"

#include <algorithm>
#include <atomic>

namespace displayctl::session
{

namespace
{

using model::Kind;
using model::Setting;
using model::Target;

constexpr int invalidParameter = 4; // status codes of CIM
constexpr int notFound = 6;

std::string fullName(std::string_view className)
{
    return std::string(model::classPrefix) + std::string(className);
}

wbem::Property argument(std::string_view name, std::string text)
{
    return {std::string(name), "string", wbem::Value(std::move(text))};
}

wbem::Property reference(std::string_view name, const wbem::ObjectPath &path)
{
    return {std::string(name), "reference", wbem::Value(path)};
}

thread_local bool sentByThread = false;
std::atomic<bool> sentAtAll = false;

wbem::Answer missing(std::string_view className)
{
    wbem::Answer answer;
    answer.status = wbem::Status::cimError;
    answer.code = notFound;
    answer.message = "the monitor has no object of the class " + fullName(className);
    return answer;
}

} // namespace

void Sent::forget()
{
    sentByThread = false;
}

void Sent::note()
{
    sentByThread = true;
    sentAtAll = true;
}

bool Sent::byThisThread()
{
    return sentByThread;
}

bool Sent::atAll()
{
    return sentAtAll;
}

Session::Session(const site::Monitor &monitor, std::chrono::milliseconds timeout)
    : monitor_(monitor), timeout_(timeout), connection_(monitor.endpoint, timeout)
{
}

std::optional<wbem::Answer> Session::read(const Classes &classes)
{
    std::vector<wbem::Operation> operations;
    for (const std::string &name : classes) {
        operations.push_back(wbem::enumerateInstances(fullName(name)));
    }
    std::vector<wbem::Answer> answers = connection_.exchange(operations);
    std::optional<wbem::Answer> failure;
    auto answer = answers.begin();
    for (const std::string &name : classes) {
        if (answer->ok()) {
            state_.put(name, std::move(answer->instances));
            read_.insert(name);
        } else if (!failure) {
            failure = std::move(*answer);
        }
        ++answer;
    }
    return failure;
}

std::optional<wbem::Answer> Session::readMissing(const Classes &classes)
{
    Classes left;
    std::ranges::set_difference(classes, read_, std::inserter(left, left.end()));
    return left.empty() ? std::nullopt : read(left);
}

std::optional<wbem::Answer> Session::readAgain()
{
    return read(Classes(read_));
}

wbem::Answer Session::invoke(std::string_view className, int number, std::string_view method,
                             std::vector<wbem::Property> arguments, bool isChange)
{
    const wbem::Instance *object = state_.find(className, number);
    if (object == nullptr) {
        return missing(className);
    }
    const wbem::Operation operation =
        wbem::invokeMethod(object->path, std::string(method), std::move(arguments));
    if (isChange) {
        Sent::note();
    }
    return connection_.exchange(operation);
}

// All three parts in one request: those that are not changed are sent as they are.
wbem::Answer Session::sendAddress(std::span<const Target> changes)
{
    const std::string_view className = changes.front().setting->row->className;
    const wbem::Instance *object = state_.find(className, 0);
    if (object == nullptr) {
        return missing(className);
    }
    std::vector<wbem::Property> values;
    for (const std::string_view part : {"network.address", "network.mask", "network.gateway"}) {
        const Setting &setting = *model::findSetting(part);
        const auto change = std::ranges::find(changes, &setting, &Target::setting);
        const model::Value value = change == changes.end() ? state_.value(setting) : change->value;
        values.push_back({std::string(setting.properties.front()->name), "string",
                          wbem::Value::array({value.is_string() ? value.get<std::string>() : ""})});
    }
    const wbem::Operation operation = wbem::modifyInstance(object->path, std::move(values));
    Sent::note();
    return connection_.exchange(operation);
}

wbem::Answer Session::send(std::span<const Target> changes)
{
    const Target &target = changes.front();
    const Setting &setting = *target.setting;
    if (setting.kind() == Kind::address) {
        return sendAddress(changes);
    }
    const model::MethodArgument &first = setting.arguments.front();
    const std::string_view className = first.owner->name.substr(model::classPrefix.size());
    const int number = className == setting.row->className ? setting.number : 0;
    std::vector<wbem::Property> arguments;
    if (setting.kind() == Kind::networkMode) {
        const bool isDhcp = target.value == "dhcp";
        const char *data = isDhcp ? "DHCPSettingData" : "ExtendedStaticIPAssignmentSettingData";
        const wbem::Instance *settingData = state_.find(data, 0);
        const wbem::Instance *connection = state_.find("IPNetworkConnection", 0);
        if (settingData == nullptr || connection == nullptr) {
            return missing(settingData == nullptr ? data : "IPNetworkConnection");
        }
        arguments = {reference("IPNetworkConnection", connection->path), argument("Mode", "1"),
                     reference("SettingData", settingData->path)};
    } else if (first.argument != nullptr && first.argument->type == "reference") {
        // The preset of that number, the input of that code.
        const bool isPreset = setting.kind() == Kind::preset;
        const char *referred = isPreset ? "ColorSpace" : "VideoInput";
        const int which = isPreset ? target.value.get<int>()
                                   : std::stoi(model::sentTexts(setting, target.value).front()) + 1;
        const wbem::Instance *object = state_.find(referred, which);
        if (object == nullptr) {
            return missing(referred);
        }
        arguments = {reference(first.argument->name, object->path)};
    } else if (first.argument != nullptr) {
        const std::vector<std::string> texts = model::sentTexts(setting, target.value);
        for (std::size_t i = 0; i < setting.arguments.size(); ++i) {
            arguments.push_back(argument(setting.arguments[i].argument->name, texts[i]));
        }
    }
    return invoke(className, number, first.method->name, std::move(arguments));
}

wbem::Answer Session::run(const model::ActionRow &action, int preset)
{
    const std::string_view className = action.method.substr(0, action.method.find('.'));
    const std::string_view method = action.method.substr(className.size() + 1);
    std::vector<wbem::Property> arguments;
    if (action.name == "power-off") {
        arguments.push_back(argument("SoftPowerState", "0"));
    }
    return invoke(className, className == "ColorSpace" ? preset : 0, method, std::move(arguments));
}

std::optional<bool> Session::isAdministrator()
{
    if (readMissing({"Monitor"})) {
        return std::nullopt;
    }
    const wbem::Answer answer = invoke("Monitor", 0, "SetName", {}, false);
    if (answer.status != wbem::Status::cimError) {
        return std::nullopt;
    }
    if (answer.code == accessDenied) {
        return false;
    }
    return answer.code == invalidParameter ? std::optional<bool>(true) : std::nullopt;
}

void addChangeClasses(const Setting &setting, Classes &classes)
{
    model::addClasses(setting, classes);
    for (const model::MethodArgument &each : setting.arguments) {
        classes.insert(std::string(each.owner->name.substr(model::classPrefix.size())));
        if (each.argument != nullptr && each.argument->type == "reference" &&
            setting.kind() == Kind::choice) {
            classes.insert("VideoInput");
        }
    }
    if (setting.kind() == Kind::networkMode) {
        classes.insert({"DHCPSettingData", "ExtendedStaticIPAssignmentSettingData", "IPNetworkConnection"});
    }
    if (setting.kind() == Kind::preset) {
        classes.insert("ColorSpace");
    }
    if (setting.name == "monitor.name") {
        classes.insert("ExtendedStaticIPAssignmentSettingData"); // tells whether the name is but the address
    }
}

} // namespace displayctl::session
