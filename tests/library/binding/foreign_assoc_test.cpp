// SPDX-License-Identifier: Apache-2.0
// The library beside another provider's library that has functions of the same names: in one process,
// whichever comes first, each keeps to its own.
//
// The executable exists twice: one is linked with the foreign library, so that its names come before
// everything; the other loads it at run time.

#include "every_class.h"
#include "provider_fixture.h"
#include <cstdio>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <set>

#ifdef FOREIGN_LINKED
extern "C" int foreignCalls();
#endif

namespace
{

template <typename Function>
Function *find(void *library, const std::string &name)
{
    auto *found = reinterpret_cast<Function *>(dlsym(library, name.c_str()));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

void *load(const char *file, int flags)
{
    void *library = dlopen(file, RTLD_NOW | flags);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

/** A class of the loaded library. */
TestedClass classOf(void *library, const char *name)
{
    return {name,
            find<CMPIInstanceMI *(const CMPIBroker *, const CMPIContext *, CMPIStatus *)>(
                library, std::string(name) + "_Create_InstanceMI"),
            nullptr,
            find<CMPIAssociationMI *(const CMPIBroker *, const CMPIContext *, CMPIStatus *)>(
                library, std::string(name) + "_Create_AssociationMI")};
}

struct Dynamic {
    std::set<std::string> exported;
    std::set<std::string> imported;
};

/** The names in the dynamic symbol table of a shared library. */
Dynamic dynamicSymbols(const char *file)
{
    Dynamic symbols;
    std::vector<unsigned char> bytes;
    FILE *stream = fopen(file, "rb");
    if (!stream) {
        ADD_FAILURE() << file << " cannot be opened";
        return symbols;
    }
    unsigned char block[65536];
    for (size_t got; (got = fread(block, 1, sizeof block, stream)) > 0;) {
        bytes.insert(bytes.end(), block, block + got);
    }
    fclose(stream);

    const auto at = [&bytes]<typename Record>(Record *record, size_t offset) {
        if (offset + sizeof *record > bytes.size()) {
            ADD_FAILURE() << "a truncated library";
            return false;
        }
        memcpy(record, bytes.data() + offset, sizeof *record);
        return true;
    };
    ElfW(Ehdr) header;
    if (!at(&header, 0)) {
        return symbols;
    }
    for (size_t i = 0; i < header.e_shnum; ++i) {
        ElfW(Shdr) section;
        ElfW(Shdr) names;
        if (!at(&section, header.e_shoff + i * header.e_shentsize) || section.sh_type != SHT_DYNSYM ||
            !at(&names, header.e_shoff + section.sh_link * header.e_shentsize)) {
            continue;
        }
        for (size_t offset = 0; offset < section.sh_size; offset += section.sh_entsize) {
            ElfW(Sym) symbol;
            if (!at(&symbol, section.sh_offset + offset) || symbol.st_name == 0) {
                continue;
            }
            const char *name =
                reinterpret_cast<const char *>(bytes.data()) + names.sh_offset + symbol.st_name;
            (symbol.st_shndx == SHN_UNDEF ? symbols.imported : symbols.exported).insert(name);
        }
    }
    return symbols;
}

bool isOfTheEngine(const std::string &name)
{
    for (const char *part : {"assoc_", "match_instance", "get_instance_from_key"}) {
        if (name.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

Path colorSpace(int number)
{
    return path("ZT_Marovelton_ColorSpace",
                {{"InstanceID", "ZT:Marovelton_ColorSpace:" + std::to_string(number)}});
}
const Path monitor = path("ZT_Marovelton_Monitor", {{"DeviceID", "ZT:Marovelton_Monitor"}});
const Path service = path("ZT_Marovelton_RemoteManagementService",
                          {{"CreationClassName", "ZT_Marovelton_RemoteManagementService"}});
const Path endpoint = path("ZT_Marovelton_IPProtocolEndpoint", {{"Name", "IPv4_eth0"}});

void serveObjects()
{
    broker.classes["ZT_Marovelton_ColorSpace"].instances = {{colorSpace(1)}, {colorSpace(2)}};
    broker.classes["ZT_Marovelton_Monitor"].instances = {{monitor}};
    broker.classes["ZT_Marovelton_RemoteManagementService"].instances = {{service}};
    broker.classes["ZT_Marovelton_WSManagementService"].instances = {};
    broker.classes["ZT_Marovelton_IPProtocolEndpoint"].instances = {{endpoint}};
}

/** Every way into the engine. */
void useEveryOperation(void *library)
{
    serveObjects();
    const TestedClass colorModel = classOf(library, "ZT_Marovelton_ColorModel");
    const Path tie = path("ZT_Marovelton_ColorModel",
                          {{"ColorSpace", reference(colorSpace(2))}, {"Monitor", reference(monitor)}});
    EXPECT_EQ(associators(colorModel, monitor).returned.size(), 2u);
    EXPECT_EQ(associatorNames(colorModel, monitor).returned.size(), 2u);
    EXPECT_EQ(references(colorModel, monitor).returned.size(), 2u);
    EXPECT_EQ(referenceNames(colorModel, monitor).returned.size(), 2u);
    EXPECT_EQ(enumerate(colorModel, tie).returned.size(), 2u);
    EXPECT_EQ(enumerateNames(colorModel, tie).returned.size(), 2u);
    const Answer one = get(colorModel, tie);
    EXPECT_STATUS(one, CMPI_RC_OK, "");
    EXPECT_EQ(one.returned.size(), 1u);

    const TestedClass provides = classOf(library, "ZT_Marovelton_ProvidesEndpoint");
    const Answer found = associatorNames(provides, service);
    EXPECT_STATUS(found, CMPI_RC_OK, "");
    EXPECT_EQ(found.path(), endpoint);
}

} // namespace

TEST(ForeignEngine, TheForeignLibraryHasTheNamesAndOursDoesNot)
{
    const Dynamic foreign = dynamicSymbols(FOREIGN_LIBRARY);
    EXPECT_TRUE(foreign.exported.contains("_assoc_create_refs_1toN"));
    size_t foreignNames = 0;
    for (const std::string &name : foreign.exported) {
        foreignNames += isOfTheEngine(name);
    }
    EXPECT_EQ(foreignNames, 20u);

    const Dynamic ours = dynamicSymbols(DISPLAY_MANAGEMENT_LIBRARY);
    EXPECT_FALSE(ours.exported.empty());
    for (const std::string &name : ours.exported) {
        EXPECT_FALSE(isOfTheEngine(name)) << name << " is exported";
        EXPECT_TRUE(name.starts_with("ZT_Marovelton_") &&
                    (name.ends_with("_Create_InstanceMI") || name.ends_with("_Create_MethodMI") ||
                     name.ends_with("_Create_AssociationMI")))
            << name << " is exported and no factory";
    }
    for (const std::string &name : ours.imported) {
        EXPECT_FALSE(isOfTheEngine(name)) << name << " is looked up";
    }
#define NAME_OF(Class) #Class,
    for (const char *name : {EVERY_ASSOCIATION_CLASS(NAME_OF)}) {
        const std::string className = std::string("ZT_Marovelton_") + name;
        EXPECT_TRUE(ours.exported.contains(className + "_Create_InstanceMI")) << name;
        EXPECT_TRUE(ours.exported.contains(className + "_Create_AssociationMI")) << name;
        EXPECT_FALSE(ours.exported.contains(className + "_Create_MethodMI")) << name;
    }
}

TEST(ForeignEngine, NothingOfOursIsBoundToIt)
{
#ifdef FOREIGN_LINKED
    void *foreign = load(nullptr, RTLD_GLOBAL);
    ASSERT_EQ(foreignCalls(), 0);
#else
    void *foreign = load(FOREIGN_LIBRARY, RTLD_GLOBAL);
#endif
    ASSERT_NE(foreign, nullptr);
    auto *calls = find<int()>(foreign, "foreignCalls");
    ASSERT_NE(calls, nullptr);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "_assoc_create_refs_1toN"), nullptr)
        << "the foreign names are there for everybody";

    void *ours = load(DISPLAY_MANAGEMENT_LIBRARY, RTLD_GLOBAL);
    ASSERT_NE(ours, nullptr);
    useEveryOperation(ours);
    EXPECT_EQ(calls(), 0) << "the library was bound to foreign functions";

    // Nor is the foreign library bound to ours.
    auto *own = find<int()>(foreign, "foreignOwnEngine");
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own(), 1);
}

#ifndef FOREIGN_LINKED
TEST(ForeignEngine, NorIsItBoundToOursWhenItComesLater)
{
    void *ours = load(DISPLAY_MANAGEMENT_LIBRARY, RTLD_GLOBAL);
    ASSERT_NE(ours, nullptr);
    void *foreign = load(FOREIGN_LIBRARY, RTLD_LOCAL);
    ASSERT_NE(foreign, nullptr);
    auto *own = find<int()>(foreign, "foreignOwnEngine");
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own(), 1);
    useEveryOperation(ours);
    EXPECT_EQ(find<int()>(foreign, "foreignCalls")(), 0);
}
#endif
