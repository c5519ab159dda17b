// SPDX-License-Identifier: Apache-2.0
// tree: the objects that can be reached from the monitor, and what ties them together.
#include "command/settings.h"
#include "model/facts.h"
#include "wbem/connection.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <map>
#include <memory>
#include <set>

namespace displayctl::command
{

namespace
{

using wbem::ObjectPath;

constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

/** A way from one object to another: an association, seen from one of its ends. */
struct Branch {
    std::string kind;        // the association's class, and the roles at both ends
    std::string association; // what stands for the association itself, the same from both ends
    std::size_t end;         // the object that it leads to
    std::string details;     // what the association says beside its ends
};

struct Object {
    ObjectPath path;
    std::size_t origin; // the object that led here first
    std::vector<Branch> branches{};
    std::string problem{}; // why its associations could not be read
};

/** Class names without what all of them begin with. */
std::string shortClass(const std::string &name)
{
    return name.starts_with(model::classPrefix) ? name.substr(model::classPrefix.size()) : name;
}

/** The class and the key that tells the object from the others of its class. */
std::string labelOf(const ObjectPath &path)
{
    std::string label = shortClass(path.className);
    for (const char *key : {"InstanceID", "DeviceID", "Name", "SystemName"}) {
        const std::string_view value = path.text(key);
        if (!value.empty()) {
            label += " \"" + std::string{value} + '"';
            break;
        }
    }
    return label;
}

/** The objects, nearest first. */
class Graph
{
  public:
    explicit Graph(unsigned depth) : depth_(depth) {}

    /** The answer that stands in the way, if there is one. */
    [[nodiscard]] std::optional<wbem::Answer> read(wbem::Connection &connection)
    {
        wbem::Answer start =
            connection.exchange(wbem::enumerateInstanceNames(std::string{model::classPrefix} + "Monitor"));
        if (!start.ok()) {
            return start;
        }
        for (const ObjectPath &path : start.paths) {
            static_cast<void>(meet(path, nowhere));
        }
        starts_ = objects_.size();
        std::size_t begin = 0;
        for (unsigned level = 0; level < depth_ && begin < objects_.size(); ++level) {
            const std::size_t end = objects_.size();
            if (auto failure = readLevel(connection, begin, end)) {
                return failure;
            }
            begin = end;
        }
        return std::nullopt;
    }

    [[nodiscard]] const std::vector<Object> &objects() const
    {
        return objects_;
    }
    /** So many of the objects are those that the tree starts at. */
    [[nodiscard]] std::size_t starts() const
    {
        return starts_;
    }

  private:
    std::size_t meet(const ObjectPath &path, std::size_t origin)
    {
        const auto [known, isNew] = numbers_.emplace(path.toText(), objects_.size());
        if (isNew) {
            objects_.push_back({path, origin});
        }
        return known->second;
    }

    std::optional<wbem::Answer> readLevel(wbem::Connection &connection, std::size_t begin, std::size_t end)
    {
        std::vector<wbem::Operation> operations;
        for (std::size_t i = begin; i < end; ++i) {
            operations.push_back(wbem::references(objects_[i].path));
        }
        std::vector<wbem::Answer> answers = connection.exchange(operations);
        for (std::size_t i = begin; i < end; ++i) {
            wbem::Answer &answer = answers[i - begin];
            if (answer.status == wbem::Status::cimError) {
                objects_[i].problem = session::messageOf(answer);
            } else if (!answer.ok()) {
                return std::move(answer);
            }
            for (const wbem::Instance &association : answer.instances) {
                add(i, association);
            }
        }
        return std::nullopt;
    }

    void add(std::size_t object, const wbem::Instance &association)
    {
        std::string own;
        std::string details;
        std::map<std::string, std::string> ends; // by role, so that it is the same from both ends
        std::vector<const wbem::Property *> others;
        for (const wbem::Property &property : association.properties) {
            const ObjectPath *end = property.value.reference();
            if (end == nullptr) {
                const std::string text = property.value.text().value_or("");
                details += text.empty() ? "" : (details.empty() ? "" : ", ") + property.name + '=' + text;
                continue;
            }
            ends.emplace(property.name, end->toText());
            if (own.empty() && *end == objects_[object].path) {
                own = property.name;
            } else {
                others.push_back(&property);
            }
        }
        const std::string className = shortClass(association.path.className);
        std::string identity = className;
        for (const auto &[role, end] : ends) {
            identity += ' ' + role + '=' + end;
        }
        for (const wbem::Property *other : others) {
            const std::size_t end = meet(*other->value.reference(), object);
            objects_[object].branches.push_back(
                {className + " (" + own + " -> " + other->name + ')', identity, end, details});
        }
    }

    unsigned depth_;
    std::vector<Object> objects_;
    std::map<std::string, std::size_t> numbers_; // by the text of the path
    std::size_t starts_ = 0;
};

/** Goes through the graph so that each object is followed where it is nearest to the start, and each
 * association once. */
class Printer
{
  public:
    explicit Printer(const Graph &graph) : objects_(graph.objects())
    {
        for (std::size_t i = 0; i < graph.starts(); ++i) {
            text_ += labelOf(objects_[i].path) + '\n';
            printed_.insert(i);
            Json node{{"object", objects_[i].path.toText()}};
            printBranches(i, "", node);
            tree_.push_back(std::move(node));
        }
        text_ += std::to_string(objects_.size()) + " objects, " + std::to_string(followed_.size()) +
                 " associations\n";
    }

    [[nodiscard]] const std::string &text() const
    {
        return text_;
    }
    [[nodiscard]] const Json &tree() const
    {
        return tree_;
    }

  private:
    void printBranches(std::size_t object, const std::string &indent, Json &node)
    {
        if (!objects_[object].problem.empty()) {
            text_ += indent + "!-- its associations cannot be read: " + objects_[object].problem + '\n';
            node["problem"] = objects_[object].problem;
        }
        std::vector<std::string> kinds; // in the order in which the monitor tells them
        std::map<std::string, std::vector<const Branch *>> branches;
        for (const Branch &branch : objects_[object].branches) {
            if (followed_.emplace(branch.association, object).first->second == object) {
                std::vector<const Branch *> &same = branches[branch.kind];
                if (same.empty()) {
                    kinds.push_back(branch.kind);
                }
                same.push_back(&branch);
            }
        }
        for (const std::string &kind : kinds) {
            const bool isLast = kind == kinds.back();
            const std::string below = indent + (isLast ? "    " : "|   ");
            text_ += indent + (isLast ? "`-- " : "|-- ") + kind + '\n';
            Json group{{"association", kind}};
            for (const Branch *branch : branches.at(kind)) {
                printEnd(object, *branch, below, branch == branches.at(kind).back(), group);
            }
            history::member(node, "associations", Json::array()).push_back(std::move(group));
        }
    }

    void printEnd(std::size_t object, const Branch &branch, const std::string &indent, bool isLast,
                  Json &group)
    {
        const Object &end = objects_[branch.end];
        text_ += indent + (isLast ? "`-- " : "|-- ") + labelOf(end.path) +
                 (branch.details.empty() ? "" : " [" + branch.details + ']');
        Json node{{"object", end.path.toText()}};
        if (!branch.details.empty()) {
            node["details"] = branch.details;
        }
        if (end.origin == object && printed_.insert(branch.end).second) {
            text_ += '\n';
            printBranches(branch.end, indent + (isLast ? "    " : "|   "), node);
        } else {
            text_ += printed_.contains(branch.end) ? " (above)\n" : " (below)\n";
        }
        history::member(group, "objects", Json::array()).push_back(std::move(node));
    }

    const std::vector<Object> &objects_;
    std::set<std::size_t> printed_;
    std::map<std::string, std::size_t> followed_; // associations, by the object that they were followed from
    std::string text_;
    Json tree_ = Json::array();
};

Report tree(const Call &call, const site::Monitor &monitor, unsigned depth)
{
    wbem::Connection connection{monitor.endpoint, call.options.timeout()};
    Graph graph{depth};
    if (const auto failure = graph.read(connection)) {
        return failureReport(*failure);
    }
    const Printer printer{graph};
    Report report;
    report.text = printer.text();
    report.document["tree"] = printer.tree();
    return report;
}

} // namespace

void addTree(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("tree", "Prints the objects of a monitor and what ties them together");
    auto depth = std::make_shared<unsigned>(std::numeric_limits<unsigned>::max());
    command->add_option("--depth", *depth, "so many associations away from the monitor at most")
        ->type_name("N")
        ->check(CLI::Range(0U, 1000U));
    command->footer(
        "Each association is shown once: its class, the role of the object above it and that of the "
        "objects below it,\nthen those objects, each with the key that tells it from the others. What an "
        "association says beside its ends\nstands in brackets. An object that several associations lead "
        "to is followed where it is nearest to the monitor;\nelsewhere it is marked (above) or (below).\n"
        "Examples:\n"
        "  displayctl tree\n"
        "  displayctl -m suite4-a tree --depth 1");
    command->callback([depth, &action] {
        action = [depth](Call &call) {
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return tree(call, monitor, *depth); });
        };
    });
}

} // namespace displayctl::command
