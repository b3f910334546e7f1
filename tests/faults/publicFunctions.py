#!/usr/bin/env python3
"""The public functions of the engine's headers, as rows for the table of tests/faults/callers_test.cpp.

    publicFunctions.py HEADER ... > rows.inc

A row is a macro with the name and the parameters of a function, and an expression for it:

    FUNCTION("zlfNewId()", zlfNewId, unsigned int ())
    STATIC("RAVOLT::clear(bool, bool, bool)", RAVOLT, clear, bool (bool, bool, bool))
    MEMBER("RVNODE::setName(const char *)", RVNODE, setName, void (RVNODE::*)(const char *))
    VARIADIC("RVLABEL::write(const char *, ...)", RVLABEL, write)
    VARIADIC_FUNCTION("zlfLog(const char *, ...)", zlfLog)

Constructors, destructors and operators have none: objects of every class are created, copied, assigned and
deleted by the test itself. A declaration that the script does not understand ends it with an error, so that
none is missing.
"""
import re
import sys

NAMED = re.compile(r"^(?P<type>.*?[\w>*&\]]\s*[*&]*\s*)\b(?P<name>\w+)$")


def without_comments(text):
    text = re.sub(r"//[^\n]*", "", text)
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    text = re.sub(r"=\s*\{\}", "", text)  # values of members and parameters
    return re.sub(r"^\s*#[^\n]*(\\\n[^\n]*)*", "", text, flags=re.M)


def matching(text, start, opening="{", closing="}"):
    """The position after the bracket that closes the one at `start`."""
    depth = 0
    for position in range(start, len(text)):
        depth += (text[position] == opening) - (text[position] == closing)
        if depth == 0:
            return position + 1
    raise SystemExit("brackets do not match")


def statements(body):
    """The declarations of a body, each without the braces that follow it."""
    position, begin = 0, 0
    while position < len(body):
        if body[position] == ";":
            yield body[begin:position].strip()
            begin = position + 1
        elif body[position] == "{":
            end = matching(body, position)
            yield body[begin:position].strip() + " {" + body[position + 1:end - 1] + "}"
            while end < len(body) and body[end] in " \n;":
                end += 1
            begin = position = end
            continue
        elif body[position] == ":" and re.search(r"\b(public|protected|private)\s*$", body[begin:position]):
            yield body[begin:position].strip() + ":"
            begin = position + 1
        position += 1


def parameters(text):
    """The types of a list of parameters."""
    types, depth, begin = [], 0, 0
    text = text.strip()
    for position, letter in enumerate(text + ","):
        depth += (letter in "(<") - (letter in ")>")
        if letter == "," and depth == 0:
            piece = text[begin:position].split("=")[0].strip()
            begin = position + 1
            if piece in ("", "void"):
                continue
            array = re.search(r"\s*\b\w*\s*\[\w*\]$", piece)
            if array:
                types.append(piece[:array.start()].strip() + " *")
                continue
            named = NAMED.match(piece)
            simple = re.fullmatch(r"(const )?(unsigned |long )*(\w+)(\s*[*&]+)?", piece)
            if named and named["name"] not in ("int", "long", "char") and \
                    not (simple and named["type"].strip() in ("const", "unsigned", "")):
                piece = named["type"].strip()
            types.append(piece)
    return types


def function(declaration):
    """(result, name, types, whether it is static, and const) of a function's declaration; None for others."""
    text = re.sub(r"\s*\{.*", "", declaration, flags=re.S)
    text = re.sub(r"\[\[.*?\]\]|__attribute__\s*\(\(.*?\)\)\)|\b(RV_API|virtual|explicit|inline|constexpr|friend)\b",
                  " ", text)
    text = re.sub(r"\s+", " ", text).strip()
    call = re.match(r"(?P<result>[^()=]*?)(?P<name>~?\w+|operator\W+) ?\((?P<parameters>.*)\)(?P<rest>[^()]*)$", text)
    if not call:
        return None
    static = bool(re.search(r"\bstatic\b", call["result"]))
    result = re.sub(r"\bstatic\b", "", call["result"]).strip()
    return result, call["name"], parameters(call["parameters"]), static, bool(re.search(r"\bconst\b", call["rest"])), \
        call["rest"]


def row(scope, declaration):
    if declaration.lstrip().startswith("template"):
        return None
    parts = function(declaration)
    if not parts:
        return None
    result, name, types, static, constant, rest = parts
    if "operator" in declaration.split("(")[0] or name.startswith("~") or not result or re.search(r"=\s*delete", rest):
        return None
    label = f'"{scope + "::" if scope else ""}{name}({", ".join(types)})"'
    if types and types[-1] == "...":
        return f"VARIADIC({label}, {scope}, {name})" if scope else f"VARIADIC_FUNCTION({label}, {name})"
    listed = ", ".join(types)
    if not scope:
        return f"FUNCTION({label}, {name}, {result} ({listed}))"
    if static:
        return f"STATIC({label}, {scope}, {name}, {result} ({listed}))"
    return f"MEMBER({label}, {scope}, {name}, {result} ({scope}::*)({listed}){' const' if constant else ''})"


def rows(text):
    for declaration in statements(without_comments(text)):
        opened = re.match(r"(class|struct)\s+(?:RV_API\s+)?(?P<name>\w+)[^{(]*\{(?P<body>.*)\}$", declaration, re.S)
        inner = re.match(r"namespace\s+[\w:]+\s*\{(?P<body>.*)\}$", declaration, re.S)
        if inner:
            yield from rows(inner["body"])
            continue
        if re.match(r"enum\b|union\b|template\b|constexpr\b|using\b", declaration):
            continue
        if opened:
            public = declaration.startswith("struct")
            for member in statements(opened["body"]):
                if member in ("public:", "protected:", "private:"):
                    public = member == "public:"
                elif public:
                    yield row(opened["name"], member)
        else:
            yield row("", declaration)


def main():
    for header in sys.argv[1:]:
        with open(header, encoding="utf-8") as file:
            for each in rows(file.read()):
                if each:
                    print(each)


if __name__ == "__main__":
    main()
