# SPDX-License-Identifier: Apache-2.0
# The registration of the providers in the forms of the object managers in use, all made from the stanza form,
# mof/libcmpiDisplayManagement.reg, which is the one list of classes. A line that is not understood ends the
# configuration.
#
#   write_registration_forms(<stanza file> <directory>)
#
# writes into the directory
#   libcmpiDisplayManagement.reg            stanzas, as they are
#   libcmpiDisplayManagement.registration   one line of five columns per class:
#                                           class namespace provider library kind...
#   libcmpiDisplayManagement_providers.mof  instances of PG_ProviderModule, PG_Provider and
#                                           PG_ProviderCapabilities

function(write_registration_forms stanzas directory)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${stanzas})
    # Reading as text forgives what an object manager does not, so this looks at the bytes.
    file(READ ${stanzas} bytes HEX)
    if(bytes MATCHES "(20|09|0d)0a" OR bytes MATCHES "0a0a$" OR NOT bytes MATCHES "0a$")
        message(FATAL_ERROR "${stanzas}: a blank or a carriage return at the end of a line, or not one final newline")
    endif()
    file(STRINGS ${stanzas} lines REGEX ".")
    set(line_form "")
    set(instance_form "")
    set(library "")
    set(class "")
    # A stanza ends where the next one begins: one more closes the last.
    foreach(line IN LISTS lines ITEMS "[]")
        if(line MATCHES "^\\[([A-Za-z0-9_]*)\\]$")
            set(next ${CMAKE_MATCH_1})
            if(class)
                foreach(value provider location type namespace unload)
                    if(NOT ${value})
                        message(FATAL_ERROR "${stanzas}: [${class}] has no ${value}")
                    endif()
                endforeach()
                if(library AND NOT library STREQUAL location)
                    message(FATAL_ERROR "${stanzas}: [${class}] is in another library")
                endif()
                set(library ${location})
                string(APPEND line_form "${class} ${namespace} ${provider} ${location} ${type}\n")
                string(REPLACE " " ";" kinds ${type})
                list(TRANSFORM kinds REPLACE "^instance$" "2")
                list(TRANSFORM kinds REPLACE "^association$" "3")
                list(TRANSFORM kinds REPLACE "^method$" "5")
                list(JOIN kinds ", " kinds)
                if(NOT kinds MATCHES "^[235](, [235])*$")
                    message(FATAL_ERROR "${stanzas}: [${class}] has an unknown type: ${type}")
                endif()
                string(APPEND instance_form "
instance of PG_Provider
{
   ProviderModuleName = \"${location}\";
   Name = \"${provider}\";
};

instance of PG_ProviderCapabilities
{
   ProviderModuleName = \"${location}\";
   ProviderName = \"${provider}\";
   CapabilityID = \"${class}\";
   ClassName = \"${class}\";
   Namespaces = {\"${namespace}\"};
   ProviderType = {${kinds}};
   SupportedProperties = NULL;
   SupportedMethods = NULL;
};
")
            endif()
            set(class ${next})
            foreach(value provider location type namespace unload)
                set(${value} "")
            endforeach()
        elseif(line MATCHES "^   (provider|location|type|namespace|unload): ([A-Za-z0-9_/]+( [A-Za-z0-9_/]+)*)$")
            set(${CMAKE_MATCH_1} ${CMAKE_MATCH_2})
        else()
            message(FATAL_ERROR "${stanzas}: not understood: ${line}")
        endif()
    endforeach()
    string(PREPEND instance_form "instance of PG_ProviderModule
{
   Name = \"${library}\";
   Vendor = \"Marovelton\";
   Version = \"${PROJECT_VERSION}\";
   InterfaceType = \"CMPI\";
   InterfaceVersion = \"2.0.0\";
   Location = \"${library}\";
};
")
    file(MAKE_DIRECTORY ${directory})
    file(COPY_FILE ${stanzas} ${directory}/libcmpiDisplayManagement.reg ONLY_IF_DIFFERENT)
    file(CONFIGURE OUTPUT ${directory}/libcmpiDisplayManagement.registration CONTENT "${line_form}" @ONLY)
    file(CONFIGURE OUTPUT ${directory}/libcmpiDisplayManagement_providers.mof CONTENT "${instance_form}" @ONLY)
endfunction()
