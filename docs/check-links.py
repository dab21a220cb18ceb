#!/usr/bin/env python3
"""Fails if a page of a built site links to a file or an anchor that is not there: check-links.py SITE"""

import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(path.read_text())

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("href", "src", "data") and value:
                self.links.append(value)
            elif name in ("id", "name"):
                self.anchors.add(value)


site = pathlib.Path(sys.argv[1]).resolve()
pages = {path: Page(path) for path in site.rglob("*.html")}
dead = set()
for path, page in pages.items():
    for link in page.links:
        url = urllib.parse.urlsplit(link)
        if url.scheme or link == "#":
            continue
        target = (path.parent / urllib.parse.unquote(url.path)).resolve() if url.path else path
        if not target.is_file() or (
                url.fragment and target in pages and
                urllib.parse.unquote(url.fragment) not in pages[target].anchors):
            dead.add(f"{path.relative_to(site)} has a dead link: {link}")
print(*sorted(dead), sep="\n", end="\n" if dead else "")
print(f"{sum(len(page.links) for page in pages.values())} links on {len(pages)} pages, {len(dead)} dead")
sys.exit(1 if dead or not pages else 0)
