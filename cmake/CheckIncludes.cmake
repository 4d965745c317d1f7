# Keeps the floors apart: a file includes only its own floor and those below. Linking alone would not notice, as Qt's
# include folders are shared. It reads every #include of the source folders and names each one that may not be.
#   cmake -D ROOT=<folder> -D QT_CORE=<folders with Qt Core's headers> -P cmake/CheckIncludes.cmake
cmake_minimum_required(VERSION 3.22)

# A folder (with a slash at its end) or a file without its ending, after its floor; the longest match counts.
# Every file must have a row.
set(floors
    "1 platform/"

    "2 Classes/Mode/LastDocument"
    "2 Classes/Mode/Locale"
    "2 Classes/Mode/Log/Log"
    "2 Classes/Mode/ScriptBuffer"
    "2 Classes/Mode/UtilityFunction"
    "2 Classes/Mode/Xml"
    "2 Classes/Mode/security"
    "2 text/ColorCategory"

    "3 Classes/Delegate/EditView/EditFrame"
    "3 Classes/Delegate/PlayerConfiguration"
    "3 Classes/Delegate/PluginSettingsInfo"
    "3 Classes/Delegate/PositionRect"
    "3 Classes/Delegate/WorkspaceBackup"
    "3 linklist/LinkListDocument"
    "3 linklist/LinkListModel"

    "4 platform/ui/"
    "4 Classes/Mode/Log/LogAlert"
    "4 Classes/Mode/OZPanel"
    "4 Classes/Mode/SelectedLanguage"

    "5 Classes/Delegate/DragDrop/"
    "5 Classes/Delegate/EditView/OZEditView"
    "5 Classes/Delegate/EditView/PositionView"
    "5 Classes/Delegate/RoundView"
    "5 Classes/Delegate/SimpleCell"
    "5 Classes/Delegate/TableViewProtocol"
    "5 Classes/Delegate/TransitionBGView"
    "5 linklist/LinkCellDelegate"
    "5 linklist/LinkTableView"
    "5 linklist/PrivateView"
    "5 linklist/PrivateViewDragging"
    "5 linklist/PrivateViewEditing"
    "5 text/ColorButtonCell"
    "5 text/ColorPanelDelegate"
    "5 text/SelectedCell"

    "6 Classes/Delegate/PluginSettingsDelegate/"
    # What hosts include: the window controller is a session of this interface.
    "6 plugin/PluginSettingsInterface"

    "7 plugin/"

    "8 host/"
)
set(last_floor_without_widgets 3)
set(host_floor 8)
set(public_header plugin/PluginSettingsInterface.h)

# The floor of a file, or empty when no row has it.
function(floor_of file result)
    string(REGEX REPLACE "\\.[^./]*$" "" stem "${file}")
    set(longest 0)
    set(found "")
    foreach(row IN LISTS floors)
        string(SUBSTRING "${row}" 2 -1 place)
        string(LENGTH "${place}" length)
        string(FIND "${stem}" "${place}" at)
        if(at EQUAL 0 AND length GREATER longest AND (place MATCHES "/$" OR stem STREQUAL place))
            set(longest ${length})
            string(SUBSTRING "${row}" 0 1 found)
        endif()
    endforeach()
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

# Whether that header is one of Qt's, and of more than Qt Core.
function(is_beyond_core header result)
    set(${result} FALSE PARENT_SCOPE)
    if(header MATCHES "^Qt[A-Za-z0-9]+/")
        if(NOT header MATCHES "^QtCore/")
            set(${result} TRUE PARENT_SCOPE)
        endif()
    elseif(header MATCHES "^Q[A-Za-z0-9]+$" OR header MATCHES "^q[a-z0-9_]+\\.h$")
        foreach(folder IN LISTS QT_CORE)
            if(EXISTS "${folder}/${header}")
                return()
            endif()
        endforeach()
        set(${result} TRUE PARENT_SCOPE)
    endif()
endfunction()

# What is wrong with that include; empty when nothing is.
function(complaint file floor header result)
    set(${result} "" PARENT_SCOPE)
    if(NOT header MATCHES "^(platform|Classes|linklist|text|plugin|host|tests|benchmarks)/")
        is_beyond_core("${header}" beyond)
        if(beyond AND floor LESS_EQUAL last_floor_without_widgets)
            set(${result} "floor ${floor} has Qt Core alone" PARENT_SCOPE)
        elseif(EXISTS "${ROOT}/${header}")
            set(${result} "not a source folder" PARENT_SCOPE)
        endif()
        return()
    endif()
    if(NOT EXISTS "${ROOT}/${header}")
        set(${result} "no such file" PARENT_SCOPE)
    elseif(file STREQUAL public_header)
        set(${result} "the public header stands alone" PARENT_SCOPE)
    elseif(floor EQUAL host_floor)
        if(NOT header MATCHES "^host/" AND NOT header STREQUAL public_header)
            set(${result} "a host has the public header alone" PARENT_SCOPE)
        endif()
    else()
        floor_of("${header}" other)
        if(other STREQUAL "")
            set(${result} "which stands on no floor" PARENT_SCOPE)
        elseif(other GREATER floor)
            set(${result} "floor ${other} from floor ${floor}" PARENT_SCOPE)
        endif()
    endif()
endfunction()

# Whether a quoted header is found beside the including file: then the include does not say its floor.
function(is_beside file header result)
    get_filename_component(folder "${file}" DIRECTORY)
    set(${result} FALSE PARENT_SCOPE)
    if(EXISTS "${ROOT}/${folder}/${header}")
        set(${result} TRUE PARENT_SCOPE)
    endif()
endfunction()

set(core_found FALSE)
foreach(folder IN LISTS QT_CORE)
    if(EXISTS "${folder}/QObject")
        set(core_found TRUE)
    endif()
endforeach()
if(NOT core_found)
    message(FATAL_ERROR "QT_CORE does not name the folder of Qt Core's headers: ${QT_CORE}")
endif()

set(problems "")
set(includes 0)
set(files "")
foreach(folder platform Classes linklist text plugin host)
    file(GLOB_RECURSE found RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    list(APPEND files ${found})
endforeach()
list(SORT files)
foreach(file IN LISTS files)
    floor_of("${file}" floor)
    if(floor STREQUAL "")
        string(APPEND problems "${file} stands on no floor: give it a row in cmake/CheckIncludes.cmake\n")
        continue()
    endif()
    file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
    foreach(line IN LISTS lines)
        if(NOT line MATCHES "include[ \t]*([<\"])([^>\"]+)[>\"]")
            continue()
        endif()
        set(bracket "${CMAKE_MATCH_1}")
        set(header "${CMAKE_MATCH_2}")
        math(EXPR includes "${includes} + 1")
        complaint("${file}" ${floor} "${header}" problem)
        is_beside("${file}" "${header}" beside)
        if(problem STREQUAL "" AND bracket STREQUAL "\"" AND beside)
            set(problem "say it from the sources' root")
        endif()
        if(problem)
            string(APPEND problems "${file} includes ${header}: ${problem}\n")
        endif()
    endforeach()
endforeach()

if(problems)
    message(NOTICE "${problems}")
    message(FATAL_ERROR "Some includes leave their floor")
endif()
if(includes EQUAL 0)
    message(FATAL_ERROR "There is nothing to check in ${ROOT}")
endif()
list(LENGTH files count)
message(STATUS "${includes} includes in ${count} files keep to their floors")
