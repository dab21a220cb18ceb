#!/usr/bin/env python3
"""Hands a page or a header to doxygen: filter.py FILE

Headings of a page get labels, and links between pages go to these, because versions of doxygen differ
in the labels they make up. Each labelled line of a contract becomes a paragraph. Each header becomes
known as a file.
"""

import pathlib
import re
import sys


def is_inside(page):
    return page.parent.name == "internals" or page.stem == "CONTRIBUTING"


def label(page, heading=""):
    name = page.stem.lower()
    name = "index" if name in ("readme", "contributing") else name
    slug = re.sub(r"[^\w\- ]", "", heading).lower().replace(" ", "-")
    return f"{name}-{slug}" if slug else name


def link(match):
    page = (path.parent / match[1]).resolve() if match[1] else path
    if is_inside(path) and not is_inside(page):  # to the user's site
        return f"](../{label(page)}.html{'#' + label(page, match[2]) if match[2] else ''})"
    return f"](@ref {label(page, match[2] or '')})"


path = pathlib.Path(sys.argv[1])
text = path.read_text()
if path.suffix == ".md":
    title, body = text.split("\n", 1)
    if label(path) != "index":
        title += f" {{#{label(path)}}}"
    body = re.sub(r"^##+ (.*)$", lambda match: f"{match[0]} {{#{label(path, match[1])}}}", body,
                  flags=re.M)
    text = f"{title}\n{body}"
    text = re.sub(r"\]\(([^):#]*\.md|(?=#))(?:#([\w-]+))?\)", link, text)
    # A picture stands in a comment, as other viewers of Markdown cannot draw it.
    text = re.sub(r"^<!-- (.dotfile .*) -->", r"\1", text, flags=re.M)
else:
    text = re.sub(r"^( */// )(Throws|Threading|Ownership|On failure|Requires|Lifetime|Errors|Exceptions): ",
                  r"\1<p><b>\2:</b> ", text, flags=re.M)
    if "\\file" not in text:  # doxygen lists and links a header only if it has such a comment
        text = text.replace("#pragma once", "/** \\file */ #pragma once", 1)
sys.stdout.write(text)
