# SPDX-License-Identifier: MIT
# cmake -DCATALOGUE=<file.ts> [-DSTAMP=<file>] -P checkCatalogue.cmake
# Fails when a text of the catalogue has no finished translation or no longer exists in the program.

file(READ "${CATALOGUE}" catalogue)
set(problems "")
foreach(kind IN ITEMS unfinished vanished obsolete)
    string(REGEX MATCHALL "<translation[^>]* type=\"${kind}\"" found "${catalogue}")
    list(LENGTH found count)
    if(count)
        list(APPEND problems "${count} ${kind}")
    endif()
endforeach()
if(problems)
    list(JOIN problems ", " problems)
    message(FATAL_ERROR "${CATALOGUE}: ${problems}. Run tools/update-translations.sh and finish the translations.")
endif()
if(STAMP)
    file(TOUCH "${STAMP}")
endif()
