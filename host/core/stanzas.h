// SPDX-License-Identifier: Apache-2.0
// Files of stanzas: a line [Name] and lines "key: value" behind it. Blanks around words, carriage returns and
// a missing last line feed do no harm; lines that begin with # do not count.
#ifndef HOST_CORE_STANZAS_H
#define HOST_CORE_STANZAS_H

#include <string>
#include <string_view>
#include <vector>

namespace host
{

/** The text without blanks around it. */
std::string_view trimmedLine(std::string_view text);

/** The words of the text, which blanks separate. */
std::vector<std::string> wordsOf(std::string_view text);

/** The whole file; "" with a problem when it cannot be read. */
std::string readStanzaFile(const std::string &file, std::vector<std::string> &problems);

/** Reads stanzas; what they mean is the derived class's. Every problem becomes a text "file:line: what". */
class StanzaReader
{
  public:
    /** head: what stands in the brackets, for messages. */
    StanzaReader(std::string head, const std::string &file, std::vector<std::string> &problems)
        : head_(std::move(head)), file_(file), problems_(problems)
    {
    }
    virtual ~StanzaReader() = default;

    void readText(std::string_view text);

  protected:
    virtual void begin(std::string_view name) = 0;
    /** The value is never empty. False when there is no such key. */
    virtual bool take(std::string_view key, std::string_view value) = 0;
    /** The stanza is read; says with problemOfStanza() what it lacks. */
    virtual void check() = 0;
    /** The stanza is good. */
    virtual void keep() = 0;

    void problem(const std::string &text);
    void problemOfStanza(const std::string &text);

    /** "file:line" of the stanza. */
    const std::string &where() const
    {
        return where_;
    }

  private:
    void readLine(std::string_view line);
    void readValue(std::string_view key, std::string_view value);
    void finish();

    const std::string head_;
    const std::string &file_;
    std::vector<std::string> &problems_;
    std::string name_;
    std::string where_;
    std::size_t line_ = 0;
    bool inStanza_ = false;
    bool bad_ = false;
};

} // namespace host

#endif
