"""The page says what the result says."""

from browser import ARROWS

KIND_WORDS = {
    "missing-link": "missing link", "invalid-link": "invalid link", "uneven-links": "uneven count",
    "suspected-blocking": "suspected blocking", "asymmetric-aports": "asymmetric port",
    "shared-flid": "shared FLID",
}


def counted(count, word):
    return f"{count:,} {word}" + ("" if count == 1 else "s")


def numbers(page):
    """Of the head of the page: what is counted, and how many."""
    return {text.split(maxsplit=1)[1]: int(text.split()[0].replace(",", ""))
            for text in page.texts("#numbers [data-number]")}


def check_numbers(browser, fabric):
    result = fabric.result
    in_tree = sum(len(rank) for rank in result["ranks"])
    shown = numbers(browser)
    assert shown["levels"] == len(result["ranks"])
    assert shown["switches"] == in_tree
    assert shown.get("groups", shown.get("group")) == len(result["groups"])
    assert shown.get("outside the tree", 0) == len(fabric.switches) - in_tree
    hosts = sum(1 for link in fabric.document["links"]
                if (link["a"] in fabric.switches) != (link["b"] in fabric.switches))
    assert shown["host links"] == hosts
    source = browser.text("#source")
    inferred = " · roots inferred from all cables"
    assert source == (f"{result['tool']} · {counted(len(result['records']), 'error record')}, "
                      f"{counted(result['issues'], 'issue')}"
                      f"{inferred if result['roots']['method'] == 'inferred' else ''}"), source


def check_kinds(browser, fabric):
    shown = {tile.get_attribute("data-kind"): tile.text
             for tile in browser.all("#numbers [data-kind]")}
    kinds = {finding["kind"] for finding in fabric.findings}
    assert set(shown) == kinds
    for kind, text in shown.items():
        count = len(fabric.of_kind(kind))
        assert int(text.split()[0].replace(",", "")) == count
        assert KIND_WORDS[kind] in text or count == 1


def the_numbers_are_those_of_the_result(browser):
    for name in ("clean", "faulty", "planes", "parallel", "four"):
        fabric = browser.open(browser.fabric(name))
        check_numbers(browser, fabric)
        check_kinds(browser, fabric)
        assert browser.run("return document.querySelectorAll('#list .row').length") == \
            min(100, len(fabric.findings))


def the_verdict_comes_first(browser):
    browser.open(browser.fabric("clean"))
    assert browser.text("#verdict") == "No faults found"
    assert browser.driver.title.startswith("No faults found")
    assert not browser.one(".findings").is_displayed()
    fabric = browser.open(browser.with_result("faulty", lambda result: result.update(repairs=[])))
    verdict = browser.text("#verdict")
    missing, invalid = (len(fabric.of_kind(kind)) for kind in ("missing-link", "invalid-link"))
    rest = len(fabric.findings) - missing - invalid
    groups = {(f["groupKind"], group) for f in fabric.findings for group in f["groups"]}
    of = {kind: sum(1 for one in groups if one[0] == kind)
          for kind in ("neighborhood", "connectivity group")}
    assert verdict == (f"{counted(missing, 'missing link')}, {counted(invalid, 'invalid link')} and "
                       f"{counted(rest, 'other finding')} in "
                       f"{counted(of['neighborhood'], 'neighborhood')} and "
                       f"{counted(of['connectivity group'], 'connectivity group')}"), verdict


def a_failed_check_says_so_and_shows_the_switches(browser):
    fabric = browser.open(browser.fabric("clean", "--root-regex", "^nothing"))
    assert fabric.result["status"] == "failed"
    assert browser.text("#verdict") == "The check could not be finished"
    assert browser.text("#message") == fabric.result["message"]
    assert browser.one("#switches-view").is_displayed()
    names = browser.texts("#switches-view tbody th")
    assert sorted(names) == sorted(fabric.switches.values())


def a_doubt_stands_below_the_verdict(browser):
    browser.open(browser.fabric("clean"))
    assert not browser.one("#doubt").is_displayed()
    fabric = browser.open(browser.with_spare_switch("clean"))
    doubt = fabric.result["roots"]["doubt"]
    assert doubt.endswith("switches have no rank and were not checked, the first is spare"), doubt
    assert browser.text("#doubt") == doubt


def expected_words(fabric, finding):
    """What a reader has to find in a row and its details."""
    name = fabric.name
    if finding["kind"] == "missing-link":
        return [name(finding["spine"]), name(finding["line"]), finding["spine"], finding["line"]]
    if finding["kind"] == "invalid-link":
        return [word for end in finding["ends"]
                for word in (name(end["switch"]), f"port {end['port']}", end["switch"])]
    if finding["kind"] == "uneven-links":
        return [f"{finding['direction']}-links", str(finding["expected"])] + \
            [word for one in finding["counts"]
             for word in (f"{one['count']} instead of {finding['expected']}",
                          *map(name, one["switches"][:60]))]
    if finding["kind"] == "suspected-blocking":
        return [f"{finding['uplinks']} up-link", f"{finding['internalLinks']} link"]
    if finding["kind"] == "asymmetric-aports":
        return [word for guid, port in finding["ports"] for word in (name(guid), f"port {port}")]
    return [f"FLID {finding['flid']}", *map(str, finding["groups"])]


def every_finding_names_its_switches_and_ports(browser):
    kinds = set()
    for name in ("faulty", "planes"):
        fabric = browser.open(browser.fabric(name))
        for index, finding in enumerate(fabric.findings):
            browser.run("document.querySelector(`[data-finding='${arguments[0]}']`).click()", index)
            text = browser.run("return document.querySelector('.row[aria-current]')"
                               ".parentElement.innerText")
            for word in expected_words(fabric, finding):
                assert word in text, (word, text)
            for group in finding["groups"]:
                assert str(group) in text
            assert ("Error" if finding["level"] == 3 else "Warning") in text
            kinds.add(finding["kind"])
    assert kinds == set(KIND_WORDS)


def a_kind_without_words_is_told_by_its_data(browser):
    fabric = browser.fabric("faulty")
    page = browser.folder / "faulty.html"
    text = page.read_text()
    before = '"kind":"missing-link","level":3'
    assert text.count(before) == len(fabric.of_kind("missing-link")) > 0
    page.write_text(text.replace(before, '"kind":"slow-link","speed":"HDR","level":3'))
    browser.open(fabric)
    assert browser.text("[data-kind='slow-link']").endswith("slow link")
    browser.click("[data-kind='slow-link']")
    rows = browser.texts("#list .row-title")
    assert rows == ["Slow link: speed HDR"] * len(fabric.of_kind("missing-link")), rows
    finding = fabric.of_kind("missing-link")[0]
    browser.click(f"[data-finding='{fabric.findings.index(finding)}']")
    details = browser.text("#list .details")
    for key in ("spine", "line"):
        assert fabric.name(finding[key]) in details, details


def a_switch_shows_where_its_cables_lead(browser):
    fabric = browser.fabric("parallel")
    guid = fabric.of_kind("invalid-link")[0]["ends"][0]["switch"]
    browser.open(fabric, f"#switch={guid}")
    assert browser.text("#card h3") == fabric.name(guid)
    assert guid in browser.text("#card")
    rows = [(int(row[0]), row[2], int(row[3])) for row in (
        [cell.text for cell in line.find_elements("css selector", "td")]
        for line in browser.all("#card .cables tbody tr"))]
    assert rows == [(port, fabric.name(far), far_port)
                    for port, far, far_port in fabric.cables(guid)]
    invalid = browser.all("#card .cables .invalid")
    wrong = [end for one in fabric.of_kind("invalid-link") for end in one["ends"]
             if end["switch"] == guid]
    assert len(invalid) == len(wrong)


def group_of(fabric, finding):
    return next(group for group in fabric.result["groups"]
                if (group["kind"], group["id"]) == (finding["groupKind"], finding["groups"][0]))


def go_to(browser, row, column):
    """The cursor of the matrix, from its first cell."""
    browser.keys(*[ARROWS["down"]] * (row + 1), *[ARROWS["right"]] * column)


def the_matrix_tells_cables_with_their_ports_and_missing_ones(browser):
    fabric = browser.fabric("faulty")
    finding = fabric.of_kind("missing-link")[0]
    group = group_of(fabric, finding)
    row, column = group["spines"].index(finding["spine"]), group["lines"].index(finding["line"])
    words = f"{group['kind'].replace(' ', '-')}-{group['id']}"
    browser.open(fabric, f"#view=matrix&group={words}")
    browser.until_drawn("matrix")
    browser.run("document.querySelector('#matrix-view canvas').focus()")
    go_to(browser, row, column)
    names = f"{fabric.name(finding['spine'])} – {fabric.name(finding['line'])}"
    assert browser.said().startswith(f"{names}: No cable, No cable between"), browser.said()
    browser.keys("\n")
    assert browser.run("return document.querySelector('.row[aria-current]').dataset.finding") == \
        str(fabric.findings.index(finding))
    beside = column - 1 if column else column + 1
    browser.keys(ARROWS["left"] if column else ARROWS["right"])
    ports = [(port, far_port) for port, far, far_port in fabric.cables(finding["spine"])
             if far == group["lines"][beside]]
    assert ports
    for port, far_port in ports:
        assert f"port {port} – port {far_port}" in browser.said()


def the_matrix_tells_invalid_links_beside_its_cells(browser):
    fabric = browser.fabric("parallel")
    finding = fabric.of_kind("invalid-link")[0]
    group = group_of(fabric, finding)
    end = finding["ends"][0]
    browser.open(fabric, f"#view=matrix&group={group['kind'].replace(' ', '-')}-{group['id']}")
    browser.until_drawn("matrix")
    browser.run("document.querySelector('#matrix-view canvas').focus()")
    go_to(browser, len(group["spines"]), group["lines"].index(end["switch"]))
    assert f"port {end['port']}" in browser.said()
    browser.keys("\n")
    assert browser.run("return document.querySelector('.row[aria-current]').dataset.finding") == \
        str(fabric.findings.index(finding))


def all_switches_stand_in_a_table(browser):
    fabric = browser.open(browser.fabric("faulty"), "#view=switches")
    rows = browser.texts("#switches-view tbody tr")
    assert len(rows) == len(fabric.switches)
    ranks = {guid: rank for rank, guids in enumerate(fabric.result["ranks"]) for guid in guids}
    text = "\n".join(rows)
    for guid, rank in ranks.items():
        assert f"{fabric.name(guid)}\t{guid}\t{rank}" in text
    browser.one("#switches-view input").send_keys("pod02-leaf03")
    assert [row.split("\t")[0] for row in browser.texts("#switches-view tbody tr")] == \
        ["pod02-leaf03"]


def the_largest_fabric_is_drawn(browser):
    fabric = browser.open(browser.fabric("large"))
    check_numbers(browser, fabric)
    check_kinds(browser, fabric)
    first = browser.run("return performance.getEntriesByName('first-picture')[0].startTime")
    print(f"first picture after {first:.0f} ms")
    colours = browser.run("""
        const canvas = document.querySelector('#tree-view canvas')
        const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height)
        return new Set(new Uint32Array(data.buffer)).size""")
    assert colours > 100
