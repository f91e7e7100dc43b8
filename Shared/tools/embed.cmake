# Turns the file INPUT into the C++ source OUTPUT, as the array that shared.cpp hands to Qt. Qt's own generator is not
# used for this step, since its code registers the resources when the program starts.
file(READ ${INPUT} bytes HEX)
string(REGEX REPLACE "(................................................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE ${OUTPUT}
    "extern const unsigned char sharedArchive[];\nconst unsigned char sharedArchive[] = {\n${bytes}\n};\n")
