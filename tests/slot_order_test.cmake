# Compares the order of the virtual operations with the list in data/slots.txt.
#
#   cmake -D COMPILER=<g++> -D INCLUDES=<directories> -D HEADERS=<names>
#         -D SLOTS=<list> -D WORK_DIR=<directory> -P slot_order_test.cmake
#
# For each class a probe is generated that overrides every operation of the
# list, so that the compiler checks signatures and constness, private and
# abstract operations included. Each overrider gets its number as its symbol:
# the tables in the assembly text then tell the order of overloads, and the
# class dump tells the names.
cmake_minimum_required(VERSION 3.25)

# Leaves the classes in `classes` and the operations of each in `slots_<class>`.
file(STRINGS "${SLOTS}" lines REGEX "^[^#]")
set(classes "")
foreach(line IN LISTS lines)
    if(line MATCHES "^class ([A-Za-z]+)( : ([A-Za-z]+))?$")
        set(class "${CMAKE_MATCH_1}")
        set(slots_${class} "${slots_${CMAKE_MATCH_3}}")
        list(APPEND classes "${class}")
    else()
        list(APPEND slots_${class} "${line}")
    endif()
endforeach()

set(probes "")
foreach(header IN LISTS HEADERS)
    string(APPEND probes "#include \"${header}\"\n")
endforeach()
string(APPEND probes "namespace Vantrel::Probes {\n")
foreach(class IN LISTS classes)
    string(APPEND probes
        "struct ${class}Probe : Vantrel::${class} {\n    ~${class}Probe() override;\n")
    set(number 0)
    foreach(slot IN LISTS slots_${class})
        math(EXPR number "${number} + 1")
        string(APPEND probes "    ${slot} override __asm__(\"slot_${number}\");\n")
    endforeach()
    # The destructor is the first operation that is not inline, so that its
    # definition brings the table into this translation unit.
    string(APPEND probes "};\n${class}Probe::~${class}Probe() {}\n")
endforeach()
string(APPEND probes "}\n")
file(WRITE "${WORK_DIR}/probes.cpp" "${probes}")

list(TRANSFORM INCLUDES PREPEND "-I")
execute_process(
    COMMAND "${COMPILER}" -std=c++17 -fPIC ${INCLUDES}
        -S -o probes.s -fdump-lang-class=probes.class probes.cpp
    WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "An operation of the list is missing or has another signature:\n${errors}")
endif()

# Both texts list the entries of a table below a line with its symbol. In `out`:
# what `pattern` finds there, up to `end` or to the table of a second base.
function(read_table text symbol end pattern out)
    string(FIND "${text}" "${symbol}:" begin)
    if(begin EQUAL -1)
        message(FATAL_ERROR "There is no table ${symbol}")
    endif()
    string(SUBSTRING "${text}" ${begin} 20000 text)
    string(REGEX REPLACE "\n(${end}|[^\n]*[\t)]-[0-9]+\n).*" "\n" text "${text}")
    string(REGEX MATCHALL "${pattern}" entries "${text}")
    list(TRANSFORM entries STRIP)
    set(${out} "${entries}" PARENT_SCOPE)
endfunction()

file(READ "${WORK_DIR}/probes.s" assembly)
file(READ "${WORK_DIR}/probes.class" dump)
set(faults "")
foreach(class IN LISTS classes)
    set(probe "${class}Probe")
    string(LENGTH "${probe}" length)
    set(mangled "N7Vantrel6Probes${length}${probe}")

    set(expected_symbols "_ZTI${mangled}E" "_Z${mangled}D1Ev" "_Z${mangled}D0Ev")
    set(expected_names "::~${probe}" "::~${probe}")
    set(number 0)
    foreach(slot IN LISTS slots_${class})
        math(EXPR number "${number} + 1")
        list(APPEND expected_symbols "slot_${number}")
        string(REGEX MATCH "([A-Za-z0-9]+)\\(" _ "${slot}")
        list(APPEND expected_names "::${CMAKE_MATCH_1}")
    endforeach()

    read_table("${assembly}" "_ZTV${mangled}E" "\t[.](weak|section|size|globl|text)"
        "(slot_|_ZN|_ZTI)[A-Za-z0-9_]+" symbols)
    read_table("${dump}" "_ZTV${mangled}E" "\n" "::[~A-Za-z0-9_]+\n" names)
    foreach(kind symbols names)
        if(NOT ${kind} STREQUAL expected_${kind})
            string(REPLACE ";" "\n      " expected "${expected_${kind}}")
            string(REPLACE ";" "\n      " found "${${kind}}")
            string(APPEND faults
                "  ${class}, the table should be\n      ${expected}\n    and is\n      ${found}\n")
        endif()
    endforeach()
endforeach()
if(faults)
    message(FATAL_ERROR "The virtual operations are not in the listed order "
        "(slot_N stands for the Nth operation listed):\n${faults}")
endif()
list(LENGTH classes count)
message("The tables of ${count} classes have the listed order.")
