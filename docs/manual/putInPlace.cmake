# SPDX-License-Identifier: MIT
# Copies EDITION of the manual to MANUAL, unless there is a better one (UNLESS).
if(NOT UNLESS OR NOT EXISTS ${UNLESS})
    get_filename_component(folder ${MANUAL} DIRECTORY)
    file(MAKE_DIRECTORY ${folder})
    file(COPY_FILE ${EDITION} ${MANUAL})
endif()
