# A theme is a table of colours (light.cmake and its kin). Style sheets and small pictures are templates that take their
# colours from it, so that a theme can be added or changed in one place.

# Picture, template in icons/, colour.
set(velmor_theme_icons
    "arrow       | chevron-right | arrowIcon"
    "arrow_hover | chevron-right | arrowHoverIcon"
    "arrow_off   | chevron-right | tileOffText"
    "down        | chevron-down  | text"
    "down_off    | chevron-down  | offIcon"
    "key         | key           | neutralText"
    "key_hover   | key           | neutralHoverText"
    "key_down    | key           | neutralDownText"
    "key_off     | key           | offText"
    "settings    | settings      | text"
    "settings_off| settings      | offIcon"
    "help        | help          | text"
    "help_off    | help          | offIcon"
    "update      | update        | accent"
    "update_off  | update        | offIcon"
    "check       | check         | boxMark"
    "loader      | loader        | accent"
    "loader_photo| loader_photo  | accent")

# Drawings of images/ in the colours of the light theme, which has them from there. The other themes get their own.
set(velmor_theme_pictures blocked change_card footer no_chip no_connection no_photo ostrel pinpad)

function(velmor_theme_picture name target)
    set(source ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../images/${name}.svg)
    file(READ ${source} drawing)
    foreach(pair "98A0A7 pictureLine" "848D94 pictureLine" "9E0231 pictureAccent" "C2185B pictureAccent"
            "ECEDEE pictureGround")
        separate_arguments(pair)
        list(GET pair 0 colour)
        list(GET pair 1 token)
        string(REPLACE "#${colour}" "${${token}}" drawing "${drawing}")
    endforeach()
    file(CONFIGURE OUTPUT ${target} CONTENT "${drawing}" @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
endfunction()

# Writes the files of one theme into a folder and lists them in `result`.
function(velmor_theme theme folder result)
    set(source ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
    include(${source}/${theme}.cmake)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source}/${theme}.cmake ${source}/hc.css)
    set(extra "")
    if(EXISTS ${source}/${theme}.css)
        file(READ ${source}/${theme}.css extra)
    endif()
    set(files)
    foreach(sheet window popup)
        file(READ ${source}/common.css.in common)
        file(READ ${source}/${sheet}.css.in own)
        file(CONFIGURE OUTPUT ${folder}/styles-${sheet}.css CONTENT "${common}\n${own}" @ONLY)
        list(APPEND files ${folder}/styles-${sheet}.css)
    endforeach()
    if(NOT pictures STREQUAL ":/images")
        foreach(name IN LISTS velmor_theme_pictures)
            velmor_theme_picture(${name} ${folder}/${name}.svg)
            list(APPEND files ${folder}/${name}.svg)
        endforeach()
    endif()
    # What the program itself has to know.
    file(CONFIGURE OUTPUT ${folder}/colours.ini CONTENT "link=@link@\n" @ONLY)
    list(APPEND files ${folder}/colours.ini)
    foreach(row IN LISTS velmor_theme_icons)
        string(REGEX REPLACE " *\\| *" ";" row "${row}")
        list(GET row 0 name)
        list(GET row 1 template)
        list(GET row 2 token)
        set(colour ${${token}})
        configure_file(${source}/icons/${template}.svg.in ${folder}/${name}.svg @ONLY)
        list(APPEND files ${folder}/${name}.svg)
    endforeach()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source}/common.css.in ${source}/window.css.in
        ${source}/popup.css.in)
    set(${result} ${files} PARENT_SCOPE)
endfunction()
