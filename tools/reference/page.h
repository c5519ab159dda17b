// SPDX-License-Identifier: Apache-2.0
// The reference while it is written: its sections, and the texts that they have met.
#ifndef REFERENCE_PAGE_H
#define REFERENCE_PAGE_H

#include "document.h"
#include "mof_classes.h"
#include "probe.h"
#include "sources.h"
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace reference
{

/** Where a text was received: a method, or an operation of a class. */
struct Place {
    std::string className; // "" of a section about many classes
    std::string label;
    std::string id;
    auto operator<=>(const Place &) const = default;
};

struct Text {
    std::set<int> codes;
    std::set<Place> places;
};

class Page
{
  public:
    explicit Page(std::vector<ClassFacts> theClasses) : classes_(std::move(theClasses)) {}

    Document write();

  private:
    // ---- blocks ----
    void heading(int level, const std::string &id, const std::string &text);
    void paragraph(const Line &line);
    void paragraph(const std::string &text);
    void items(const std::vector<std::string> &lines);
    void table(const std::vector<std::string> &head, const std::vector<Row> &rows);
    static const cim::Class &declared(const ClassFacts &facts);
    static bool isAssociation(const ClassFacts &facts);
    static std::string description(const cim::Qualifiers &qualifiers);

    // ---- texts ----
    void note(const Outcome &outcome, const Place &place);
    void gatherTexts();

    // ---- the sections in front ----
    void introduction();
    Line instanceCount(const ClassFacts &facts);
    /** Whether an end of the association is a class whose objects vary in number. */
    bool tiesVary(const ClassFacts &facts) const;
    void overview();

    // ---- answers that classes have in common ----
    void commonAnswers();
    void statusCodes();
    void notOffered();
    void unknownMethods();
    /** The checks of the object that a method is called on, with the classes that make them. */
    void targetTable();
    static bool isAboutUser(const Check &check);
    void rights();
    static std::string withoutPurpose(std::string cause);
    void engine();

    // ---- associations in common ----
    bool isCommonRead(const ReadCheck &check) const;
    Row readRow(const ReadCheck &check) const;
    void associationReads();

    // ---- one class ----
    void classSection(const ClassFacts &facts);
    void generalTable(const ClassFacts &facts, const cim::Class &klass);
    void tieTable(const ClassFacts &facts, const cim::Class &klass);
    static std::string listed(const cim::Qualifier *qualifier);
    /** What the declaration says about values: names, bounds, unit. */
    static Line declaredValues(const cim::Qualifiers &qualifiers);
    static std::string typeOf(const cim::Element &element);
    /** What a key is in the paths, of all instances alike or of one after the other. */
    static std::vector<std::string> keyValues(const ClassFacts &facts, const std::string &property);
    static Line provided(const ClassFacts &facts, const cim::Property &property);
    /** What the object manager fills in from the class. */
    static Line byDefault(const cim::Property &property);
    void properties(const ClassFacts &facts, const cim::Class &klass);
    void reads(const ClassFacts &facts);
    static std::vector<Row> checkRows(const std::vector<Check> &checks, bool values);
    void modification(const ClassFacts &facts);

    // ---- methods ----
    void methods(const ClassFacts &facts, const cim::Class &klass);
    void methodSection(const ClassFacts &facts, const cim::Method &method, const MethodFacts &answers);

    // ---- the index ----
    /** Links to places; where there are many, those of a class together. */
    static Line placeLinks(const std::set<Place> &places);
    void index();
    static Line sourceName(const SourceText &source);
    Line sourcesOf(const std::string &text);
    /** The texts in the sources that are no answer and no value of a property. */
    void silentTexts();

    std::vector<ClassFacts> classes_;
    Document document_;
    std::map<std::string, Text> texts_;
    std::vector<SourceText> sources_ = sourceTexts(SOURCE_DIR);
};

} // namespace reference

#endif
