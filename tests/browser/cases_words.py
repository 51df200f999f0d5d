"""What the page says of a finding, and what to do."""


def details_of(page, fabric, finding):
    """The text below a finding's row."""
    index = fabric.findings.index(finding)
    page.open(fabric, f"#finding={index + 1}")
    return page.text("#list .details")


def free_ports_are_told_up_to_those_that_others_use(browser):
    fabric = browser.fabric("swapped")
    told = 0
    for finding in fabric.of_kind("missing-link"):
        if finding["groupKind"] == "neighborhood":
            continue
        text = details_of(browser, fabric, finding)
        for guid, ports in ((finding["spine"], 8), (finding["line"], 8)):
            used = {port for port, _, _ in fabric.cables(guid)}
            free = sorted(set(range(1, ports + 1)) - used)
            assert len(free) == 1
            assert f"{fabric.name(guid)} has no cable at port {free[0]}." in text, text
            told += free[0] > max(used)
    assert told > 0


def one_link_is_not_told_as_many(browser):
    def only_one_left(result):
        for finding in result["findings"]:
            if finding["kind"] == "uneven-links":
                finding["counts"] = [{**finding["counts"][0], "count": 1}]

    fabric = browser.open(browser.with_result("swapped", only_one_left))
    titles = [text for text in browser.texts("#list .row-title") if "instead of" in text]
    assert len(titles) == len(fabric.of_kind("uneven-links"))
    for title in titles:
        assert " has 1 down-link instead of " in title or " has 1 up-link instead of " in title


def a_cable_back_to_its_switch_is_told_as_such(browser):
    fabric = browser.with_loop("clean")
    finding, = fabric.of_kind("invalid-link")
    guid, = {end["switch"] for end in finding["ends"]}
    ports = [end["port"] for end in finding["ends"]]
    text = details_of(browser, fabric, finding)
    assert text.startswith("The cable leads back to the switch that it comes from."), text
    assert browser.text(".row[aria-current] .row-title") == \
        f"{fabric.name(guid)} port {ports[0]} is cabled to its own port {ports[1]}"
    browser.open(fabric, f"#switch={guid}")
    rows = [[cell.text for cell in row.find_elements("css selector", "td")]
            for row in browser.all("#card .cables .invalid")]
    assert [(int(row[0]), row[2], int(row[3])) for row in rows] == \
        [(port, fabric.name(guid), far) for port, far in (sorted(ports), sorted(ports)[::-1])]
