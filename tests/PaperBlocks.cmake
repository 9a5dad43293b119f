# The programs that the papers show are taken out of the papers and built, so that a reader never copies one that doesn't work.
# A block stands between its fences right behind a comment with its name: <!-- block: host.cpp -->

# orlo_paper_block(paper name folder): writes the block `name` of the paper into a file of that name in the folder.
function(orlo_paper_block paper name folder)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${paper})
    file(READ ${PROJECT_SOURCE_DIR}/${paper} text)
    set(mark "<!-- block: ${name} -->\n```")
    string(FIND "${text}" "${mark}" start)
    if(start EQUAL -1)
        message(FATAL_ERROR "${paper} has no block named ${name}")
    endif()
    string(SUBSTRING "${text}" ${start} -1 text)
    string(LENGTH "${mark}" length)
    string(SUBSTRING "${text}" ${length} -1 text)
    # Past the language behind the fence, up to the fence that closes the block.
    string(FIND "${text}" "\n" start)
    math(EXPR start "${start} + 1")
    string(SUBSTRING "${text}" ${start} -1 text)
    string(FIND "${text}" "\n```\n" end)
    math(EXPR end "${end} + 1")
    string(SUBSTRING "${text}" 0 ${end} text)
    # Unchanged text keeps the file's time, and what was built from it.
    file(CONFIGURE OUTPUT ${folder}/${name} CONTENT "${text}" @ONLY NEWLINE_STYLE UNIX)
endfunction()
