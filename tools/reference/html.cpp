// SPDX-License-Identifier: Apache-2.0
// The page is XML as well as HTML, so that a test can read it.

#include "document.h"

namespace reference
{

namespace
{

constexpr const char *style = R"css(
:root { --text: #1d2430; --soft: #5b6675; --back: #ffffff; --panel: #f4f6f9; --line: #dde2ea; --link: #0b57a4;
  --code: #eef2f7; --message: #8a3b12; --mark: #fff3c4; color-scheme: light dark; }
@media (prefers-color-scheme: dark) { :root { --text: #dfe5ee; --soft: #97a3b4; --back: #14181f; --panel: #1b212b;
  --line: #2f3948; --link: #7ab8ff; --code: #232b37; --message: #f0b48a; --mark: #4a3f16; } }
* { box-sizing: border-box; }
html { scroll-padding-top: 1rem; }
body { margin: 0; font: 15px/1.5 system-ui, "Segoe UI", "DejaVu Sans", sans-serif; color: var(--text);
  background: var(--back); display: grid; grid-template-columns: 19rem minmax(0, 1fr); }
nav { position: sticky; top: 0; height: 100vh; overflow-y: auto; padding: 1rem 1rem 2rem; background: var(--panel);
  border-right: 1px solid var(--line); font-size: 13.5px; }
nav strong { display: block; margin-bottom: .6rem; font-size: 15px; }
nav ul { list-style: none; margin: 0; padding: 0; }
nav ul ul { padding-left: .9rem; margin-bottom: .3rem; }
nav li { margin: .12rem 0; overflow-wrap: anywhere; }
nav > ul > li { margin-top: .5rem; }
nav > ul > li > a { font-weight: 600; }
nav a { color: var(--text); }
nav details > summary { cursor: pointer; }
input { width: 100%; padding: .45rem .6rem; margin-bottom: .6rem; font: inherit; color: inherit;
  background: var(--back); border: 1px solid var(--line); border-radius: 6px; }
main { padding: 1.2rem 2.2rem 4rem; min-width: 0; max-width: 92rem; }
h1 { font-size: 1.9rem; margin: .2rem 0 .8rem; }
h2 { font-size: 1.45rem; margin: 2.6rem 0 .6rem; padding-bottom: .25rem; border-bottom: 2px solid var(--line); }
h3 { font-size: 1.2rem; margin: 2.2rem 0 .5rem; }
h4 { font-size: 1.02rem; margin: 1.5rem 0 .4rem; color: var(--soft); }
h5 { font: 600 1rem ui-monospace, "DejaVu Sans Mono", monospace; margin: 1.7rem 0 .3rem; }
h1 a, h2 a, h3 a, h4 a, h5 a { color: inherit; }
p { margin: .4rem 0 .6rem; max-width: 60rem; }
a { color: var(--link); text-decoration: none; }
a:hover { text-decoration: underline; }
:target > h2, :target > h3, :target > h4, :target > h5, tr:target > td { background: var(--mark); }
code { font: .88em ui-monospace, "DejaVu Sans Mono", monospace; background: var(--code); padding: .08em .3em;
  border-radius: 4px; }
code.message { white-space: pre-wrap; background: none; padding: 0; color: var(--message); }
.table { overflow-x: auto; margin: .5rem 0 1rem; }
table { border-collapse: collapse; width: 100%; font-size: 13.5px; }
th { text-align: left; font-weight: 600; color: var(--soft); background: var(--panel); }
th, td { padding: .32rem .6rem; border-bottom: 1px solid var(--line); vertical-align: top; }
td { overflow-wrap: break-word; }
td:last-child code:not(.message) { overflow-wrap: anywhere; }
td.number { color: var(--soft); text-align: right; white-space: nowrap; width: 2.2rem; }
td.status { white-space: nowrap; }
td.status code { background: none; padding: 0; }
[hidden] { display: none !important; }
@media (max-width: 60rem) { body { display: block; } nav { position: static; height: auto; max-height: 45vh; }
  main { padding: 1rem; } }
@media (max-width: 40rem) { main, code { overflow-wrap: anywhere; } thead { display: none; }
  table, tbody, tr, td { display: block; } tr { padding: .4rem 0; border-bottom: 1px solid var(--line); }
  td { border: 0; padding: .1rem 0; } td:empty { display: none; } td.number { display: inline; padding-right: .4rem; }
  td.status { white-space: normal; } td[title]::before { content: attr(title) ": "; color: var(--soft); } }
@media print { nav { display: none; } body { display: block; } }
)css";

// Shows the rows, sections and entries of the table of contents that hold what is typed.
constexpr const char *script = R"js(
(function () {
  var all = function (selector, from) { return Array.prototype.slice.call((from || document).querySelectorAll(selector)); };
  var box = document.getElementById('filter');
  var nothing = document.getElementById('nothing');
  var rows = all('main tbody tr, main li').map(function (row) { return { row: row, text: row.textContent.toLowerCase() }; });
  var sections = all('main section').map(function (section) {
    var heading = section.firstElementChild;
    return { section: section, title: heading.textContent.toLowerCase(), named: heading.tagName.toUpperCase() !== 'H1' &&
      heading.tagName.toUpperCase() !== 'H2', rows: all('tbody tr, li', section) };
  });
  var tables = all('main .table').map(function (table) { return { table: table, rows: all('tbody tr', table) }; });
  var entries = all('nav li').map(function (entry) {
    return { entry: entry, section: document.getElementById(entry.querySelector('a').getAttribute('href').slice(1)) };
  });
  var shown = function (row) { return !row.hidden; };
  var apply = function () {
    // What a client prints around a text goes: "* wbemcli: Cim: (7) CIM_ERR_NOT_SUPPORTED: text".
    var wanted = box.value.trim().replace(/^[*\s]*wbemcli:\s*/i, '')
      .replace(/^cim:\s*\(\d+\)\s*(CIM_ERR_\w+\s*:\s*)?/i, '').trim().toLowerCase();
    rows.forEach(function (r) { r.row.hidden = wanted !== '' && r.text.indexOf(wanted) === -1; });
    sections.forEach(function (s) {
      s.titled = wanted !== '' && s.named && s.title.indexOf(wanted) !== -1;
      if (s.titled) { s.rows.forEach(function (row) { row.hidden = false; }); }
    });
    sections.forEach(function (s) { s.section.hidden = wanted !== '' && !(s.titled || s.rows.some(shown)); });
    tables.forEach(function (t) { t.table.hidden = !t.rows.some(shown); });
    entries.forEach(function (e) { e.entry.hidden = e.section.hidden; });
    all('nav details').forEach(function (details) { details.open = wanted !== ''; });
    nothing.hidden = wanted === '' || sections.some(function (s) { return !s.section.hidden; });
  };
  var timer;
  box.addEventListener('input', function () { clearTimeout(timer); timer = setTimeout(apply, 120); });
  document.addEventListener('keydown', function (event) {
    if (event.key !== '/' || event.ctrlKey || event.metaKey || event.altKey || event.target === box) { return; }
    event.preventDefault();
    box.focus();
    box.select();
  });
  box.hidden = false;
}());
)js";

std::string escaped(const std::string &text)
{
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '&':
            result += "&amp;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

std::string anchor(const std::string &target, const std::string &content)
{
    return "<a href=\"#" + escaped(target) + "\">" + content + "</a>";
}

std::string text(const Line &line)
{
    std::string result;
    for (const Span &span : line) {
        const std::string content = escaped(span.text);
        switch (span.kind) {
        case Span::words:
            result += content;
            break;
        case Span::code:
            result += "<code>" + content + "</code>";
            break;
        case Span::message:
            result += "<code class=\"message\">" + content + "</code>";
            break;
        case Span::strong:
            result += "<strong>" + content + "</strong>";
            break;
        case Span::link:
            result += anchor(span.target, content);
            break;
        }
    }
    return result;
}

std::string idAttribute(const std::string &id)
{
    return id.empty() ? "" : " id=\"" + escaped(id) + "\"";
}

std::string table(const Block &block)
{
    std::string result = "<div class=\"table\"><table>\n";
    std::string head;
    bool named = false;
    for (const std::string &name : block.head) {
        head += "<th scope=\"col\">" + escaped(name) + "</th>";
        named |= !name.empty();
    }
    if (named) {
        result += "<thead><tr>" + head + "</tr></thead>\n";
    }
    result += "<tbody>\n";
    for (const Row &row : block.rows) {
        result += "<tr" + idAttribute(row.id) + ">";
        for (size_t i = 0; i < row.cells.size(); ++i) {
            const std::string &name = block.head[i];
            result += named && name.empty()                  ? "<td class=\"number\""
                      : name == "Status" || name == "Return" ? "<td class=\"status\""
                                                             : "<td";
            // A narrow screen has no line of heads: each cell says what it is.
            result += i > 0 && !name.empty() ? " title=\"" + escaped(name) + "\">" : ">";
            result += text(row.cells[i]) + "</td>";
        }
        result += "</tr>\n";
    }
    return result + "</tbody></table></div>\n";
}

// ---- the table of contents ----

/** The entries at and below a level, from `at` on, as a list. */
std::string contents(const std::vector<const Block *> &headings, size_t &at, int level)
{
    std::string result = "<ul>\n";
    while (at < headings.size() && headings[at]->level >= level) {
        const Block &heading = *headings[at++];
        const bool folded = heading.level == 3 && at < headings.size() && headings[at]->level > heading.level;
        result += folded ? "<li><details><summary>" : "<li>";
        result += anchor(heading.id, heading.brief.empty() ? text(heading.line) : escaped(heading.brief));
        result += folded ? "</summary>" : "";
        if (at < headings.size() && headings[at]->level > heading.level) {
            result += contents(headings, at, headings[at]->level);
        }
        result += folded ? "</details></li>\n" : "</li>\n";
    }
    return result + "</ul>\n";
}

std::string contents(const Document &document)
{
    std::vector<const Block *> headings;
    for (const Block &block : document) {
        if (block.kind == Block::heading && (block.level == 2 || block.level == 3 || block.level == 5)) {
            headings.push_back(&block);
        }
    }
    size_t at = 0;
    return contents(headings, at, 2);
}

} // namespace

std::string html(const Document &document)
{
    const std::string title = document.empty() ? "" : text(document[0].line);
    std::string result =
        "<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
        "<meta charset=\"utf-8\" />\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\" />\n<title>" +
        title + "</title>\n<style>" + style + "</style>\n</head>\n<body>\n<nav>\n<strong>" +
        anchor("top", title) +
        "</strong>\n<input id=\"filter\" type=\"search\" hidden=\"hidden\" "
        "placeholder=\"Search: class, method, text ( / )\" aria-label=\"Search\" />\n" +
        "<p id=\"nothing\" hidden=\"hidden\">Nothing found.</p>\n" + contents(document) + "</nav>\n<main>\n";
    std::vector<int> open; // the levels of the sections around
    for (const Block &block : document) {
        switch (block.kind) {
        case Block::heading: {
            for (; !open.empty() && open.back() >= block.level; open.pop_back()) {
                result += "</section>\n";
            }
            open.push_back(block.level);
            const std::string tag = "h" + std::to_string(block.level);
            result += "<section" + idAttribute(block.id) + "><" + tag + ">";
            result += block.id.empty() ? text(block.line) : anchor(block.id, text(block.line));
            result += "</" + tag + ">\n";
            break;
        }
        case Block::paragraph:
            result += "<p>" + text(block.line) + "</p>\n";
            break;
        case Block::items:
            result += "<ul>\n";
            for (const Row &row : block.rows) {
                result += "<li" + idAttribute(row.id) + ">" + text(row.cells.at(0)) + "</li>\n";
            }
            result += "</ul>\n";
            break;
        case Block::table:
            result += table(block);
            break;
        }
    }
    for (; !open.empty(); open.pop_back()) {
        result += "</section>\n";
    }
    return result + "</main>\n<script>\n//<![CDATA[" + script + "//]]>\n</script>\n</body>\n</html>\n";
}

} // namespace reference
