#!/usr/bin/env python3
"""Make the example census of Velmora, a country that does not exist.

Writes three files into the directory given as argument, or beside this script:

    census.dcf   the data dictionary
    census.dat   1,000 households in fixed-width lines
    places.csv   the names of the enumeration areas

The random numbers start from a fixed seed: every run gives the same bytes.
"""

import datetime
import random
import sys
from dataclasses import dataclass, field
from pathlib import Path

SEED = 20230904
HOUSEHOLDS = 1000
CENSUS_DAY = datetime.date(2023, 9, 4)
MAX_AGE = 95

# Province code, name, and the names of its districts.
PROVINCES = [
    (11, "Alta Ría", ["Serrano", "Peña Clara", "Três Fontes"]),
    (12, "Bassemer", ["Bassemer City", "Orchard Hills", "Lowmoor"]),
    (21, "Côte-d'Ivry", ["Ivry", "Saint-Évrard", "La Grève", "Noirval"]),
    (22, "Dolmark", ["Dolm", "Østvik", "Grå Sund"]),
    (31, "Étang Noir", ["Belmarais", "Queue-de-Lac", "Hautefagne"]),
    (40, "Isles of Fenn", ["Great Fenn", "Little Fenn", "Skarø"]),
]

AREA_PREFIXES = ["New", "Old", "Upper", "Lower", "Port", "Mount"]
AREA_STEMS = ["Alder", "Brème", "Cantara", "Dunmoor", "Elva", "Førde", "Garza",
              "Hólm", "Iriarte", "Jasper", "Kestel", "Lüne"]
AREA_QUARTERS = ["North", "South", "Harbour"]

GIVEN_NAMES = {
    1: ["André", "Bruno", "César", "Dávid", "Edmund", "François", "Gøran",
        "Hugo", "Íñigo", "Jürgen", "Karel", "Łukasz", "Mateo", "Noël", "Oskar"],
    2: ["Agnès", "Beatriz", "Chloë", "Dagný", "Élise", "Frida", "Grażyna",
        "Helena", "Inês", "Jördis", "Katrin", "Lucía", "Maëlle", "Núria", "Olga"],
}
FAMILY_NAMES = ["Aalto", "Bérard", "Castaño", "Dörfler", "Eriksen", "Fábrega",
                "Gonçalves", "Håkonsen", "Ibarra", "Jönsson", "Kováč", "Lefèvre",
                "Muñoz", "Nygård", "O'Hara", "Peña", "Quiñones", "Rémy",
                "Sørlie", "Thorne", "Ünal", "Vázquez", "Wójcik", "Žák"]
REMARKS = ["Second visit; nobody at home on the first one",
           "Neighbour helped to translate",
           "Señora Peña answered for the whole household",
           "House under repair after the flood",
           "Road closed, reached on foot",
           "Réponses confirmées par téléphone"]
OTHER_ANIMALS = ["Rabbits", "Bees (hives)", "Alpacas", "Geese"]


# --- The parts of a dictionary ----------------------------------------------

@dataclass
class Value:
    codes: str
    label: str
    special: str = ""


@dataclass
class ValueSet:
    label: str
    values: list
    link: int = 0


@dataclass
class Item:
    name: str
    label: str
    length: int
    sets: list = field(default_factory=list)
    alpha: bool = False
    occurrences: int = 1
    occurrence_labels: list = field(default_factory=list)
    decimals: int = 0
    point: bool = False
    zero_fill: bool = False
    subitems: list = field(default_factory=list)
    notes: list = field(default_factory=list)
    start: int = 0


@dataclass
class Record:
    name: str
    label: str
    type: str
    items: list
    required: bool = True
    max_records: int = 1
    length: int = 0


def codes(*pairs):
    """Values from alternating codes and labels."""
    return [Value(str(code), label) for code, label in zip(pairs[::2], pairs[1::2])]


def missing(code):
    return Value(str(code), "Not stated", "MISSING")


def refused(code):
    return Value(str(code), "Refused", "REFUSED")


def not_applicable():
    return Value("", "Not applicable", "NOTAPPL")


def yes_no():
    return codes(1, "Yes", 2, "No")


def plain_set(label, *values):
    """One value set; each argument is a value or a list of values."""
    flat = []
    for value in values:
        flat.extend(value if isinstance(value, list) else [value])
    return ValueSet(label, flat)


# --- The dictionary of the census -------------------------------------------

PROVINCE_LINK = 31415926


def province_set(label, with_values):
    values = [Value(str(code), name) for code, name, _ in PROVINCES]
    return ValueSet(label, values if with_values else [], PROVINCE_LINK)


def id_items():
    return [
        Item("PROVINCE", "Province", 2, [province_set("Province", True)], zero_fill=True),
        Item("DISTRICT", "District", 3, [plain_set("District", Value("1:9", ""))],
             zero_fill=True),
        Item("EA", "Enumeration area", 4, zero_fill=True),
        Item("HOUSEHOLD_NUMBER", "Household number", 3, zero_fill=True),
    ]


def visit_items():
    return [
        Item("AREA_CODE", "Area code", 9, zero_fill=True, notes=[
            "Province, district and enumeration area, one behind the other.\\r\\n",
            "The names of the areas are in places.csv."]),
        Item("VISIT_DATE", "Date of the visit", 8, zero_fill=True),
        Item("VISIT_DAY", "Day of the week of the visit", 1, [
            plain_set("Team of the day", codes("1 3 5", "First team", "2 4", "Second team",
                                               "6:7", "Weekend team"))]),
        Item("START_TIME", "Start time = hour and minute of the visit", 4, zero_fill=True,
             subitems=[
                 Item("START_HOUR", "Hour", 2, [plain_set("Hour", codes("7:19", "Hour"))],
                      zero_fill=True),
                 Item("START_MINUTE", "Minute", 2,
                      [plain_set("Minute", codes("0:59", "Minute"))], zero_fill=True)]),
        Item("PERSONS", "Persons in the household", 2,
             [plain_set("Persons in the household", codes("1:20", "Persons"))]),
        Item("URBAN_RURAL", "Urban or rural area", 1,
             [plain_set("Urban or rural area", codes(1, "Urban", 2, "Rural"))]),
        Item("ALTITUDE", "Altitude of the dwelling in metres", 5,
             [plain_set("Altitude", Value("-50:3000", ""))]),
    ]


def dwelling_items():
    walls = plain_set("Material of the walls", codes(
        11, "Concrete", 12, "Stone", 13, "Baked brick", 21, "Timber", 22, "Bamboo or reed",
        31, "Earth", 96, "Other; not listed above"), missing(99))
    wall_groups = plain_set("Walls in groups", codes(
        "11:13 21", "Lasting walls", "22 31", "Light walls", 96, "Other walls"), missing(99))
    water = plain_set("Source of drinking water", codes(
        "A", "Piped into the dwelling", "B", "Public tap", "C1", "Protected well",
        "C2", "Open well", "D", "River, lake or spring", "X", "Other"),
        Value("Z", "Not stated", "MISSING"))
    hours = plain_set("Hours of running water", codes(
        "0.0", "No running water", "0.5:24.0", "Hours"), missing("99.9"), not_applicable())
    share = plain_set("Share of the land", codes(
        "0.25", "One quarter", "0.50", "One half", "0.75", "Three quarters",
        "1.00", "The whole"), not_applicable())
    assets = plain_set("Owned by the household", yes_no(), missing(9))
    return [
        Item("WALLS", "Main material of the outer walls", 2, [walls, wall_groups]),
        Item("ROOMS", "Rooms used for sleeping", 2,
             [plain_set("Rooms used for sleeping", codes("1:20", "Rooms"), missing(99))]),
        Item("WATER_SOURCE", "Main source of drinking water", 2, [water], alpha=True),
        Item("WATER_HOURS", "Hours of running water on a usual day", 4, [hours],
             decimals=1, point=True),
        Item("ASSET", "Things that the household owns", 1, [assets], occurrences=4,
             occurrence_labels=["Radio", "Television", "Refrigerator", "Bicycle"]),
        Item("LAND_SHARE", "Share of the farmed land that the household owns", 3, [share],
             decimals=2),
    ]


def living_items():
    sex = plain_set("Sex of the deceased", codes(1, "Male", 2, "Female"))
    age = plain_set("Age at death", codes("0:95", "Age in years"), missing(99))
    return [
        Item("INCOME", "Income of the household last month", 6,
             [plain_set("Income", codes("0:900000", "Crowns"), refused(999998),
                        missing(999999))]),
        Item("FOOD_SHORTAGE",
             "During the past twelve months, was there a day on which any member of this "
             "household went to sleep hungry because there was not enough food or money "
             "to buy it?", 1,
             [plain_set("Food shortage", yes_no(), missing(9))]),
        Item("DEATH", "Deaths in the household in the past twelve months", 3,
             occurrences=3, zero_fill=True,
             occurrence_labels=["First death", "Second death", "Third death"],
             subitems=[Item("DEATH_SEX", "Sex of the deceased", 1, [sex]),
                       Item("DEATH_AGE", "Age at death", 2, [age], zero_fill=True)]),
        Item("HOUSEHOLD_WEIGHT", "Weight of the household", 7, decimals=4, zero_fill=True),
        Item("PHONE", "Telephone number", 12),
        Item("REMARKS", "Remarks of the enumerator", 60, alpha=True),
    ]


def birth_date_item():
    months = ["January", "February", "March", "April", "May", "June", "July", "August",
              "September", "October", "November", "December"]
    month_values = [Value(str(i), name) for i, name in enumerate(months, 1)]
    first_year = CENSUS_DAY.year - MAX_AGE - 1
    year_set = plain_set("Year of birth", codes(f"{first_year}:{CENSUS_DAY.year}", "Year"),
                         missing(9999))
    return Item("BIRTH_DATE", "Date of birth", 8, zero_fill=True, subitems=[
        Item("BIRTH_YEAR", "Year of birth", 4, [year_set], zero_fill=True),
        Item("BIRTH_MONTH", "Month of birth", 2,
             [plain_set("Month of birth", month_values, missing(99))], zero_fill=True),
        Item("BIRTH_DAY", "Day of birth", 2,
             [plain_set("Day of birth", codes("1:31", "Day"), missing(99))],
             zero_fill=True)])


def age_item():
    single = plain_set("Age in single years", codes("0:95", "Age in years"), missing(99))
    groups = plain_set("Age in groups", codes(
        "0:4", "0 to 4", "5:14", "5 to 14", "15:24", "15 to 24", "25:44", "25 to 44",
        "45:64", "45 to 64", "65:95", "65 and over"), missing(99))
    return Item("AGE", "Age in completed years", 2, [single, groups])


def person_items():
    relation = plain_set("Relationship to the head", codes(
        1, "Head", 2, "Spouse or partner", 3, "Son or daughter", 4, "Father or mother",
        5, "Other relative", 6, "Not related"))
    marital = plain_set("Marital status", codes(
        1, "Never married", 2, "Married", 3, "Living together", 4, "Divorced or separated",
        5, "Widowed"), missing(9), not_applicable())
    education = plain_set("Highest level of education", codes(
        0, "None", 1, "Primary", 2, "Lower secondary", 3, "Upper secondary", 4, "Higher"),
        missing(9), not_applicable())
    language = plain_set("Language", codes(
        1, "Velmorese", 2, "Fennish", 3, "Dolmarsk", 4, "French", 5, "Spanish",
        96, "Another language"), not_applicable())
    occupation = plain_set("Occupation", codes(
        "A", "Farming and fishing", "B1", "Mining", "B2", "Manufacturing", "C", "Building",
        "D10", "Wholesale and retail trade", "D20", "Transport", "E", "Teaching",
        "F", "Health care", "G", "Public service", "X", "Other"),
        Value("Z", "Not stated", "MISSING"), not_applicable())
    hours = plain_set("Hours worked", codes("0.5:98.0", "Hours"), missing("999.9"),
                      not_applicable())
    return [
        Item("LINE_NUMBER", "Line number", 2, zero_fill=True),
        Item("FULL_NAME", "Name", 30, alpha=True, subitems=[
            Item("GIVEN_NAME", "Given name", 15, alpha=True),
            Item("FAMILY_NAME", "Family name", 15, alpha=True)]),
        Item("RELATIONSHIP", "Relationship to the head of the household", 1, [relation]),
        Item("SEX", "Sex", 1, [plain_set("Sex", codes(1, "Male", 2, "Female"))]),
        birth_date_item(),
        age_item(),
        Item("PERSON_WEIGHT", "Weight of the person", 5, decimals=2),
        Item("LANGUAGE", "Languages spoken", 2, [language], occurrences=3,
             occurrence_labels=["First language", "Second language", "Third language"]),
        Item("EARLIER_PROVINCE", "Province of residence five years ago", 2,
             [province_set("Province of residence five years ago", False)]),
        Item("EDUCATION", "Highest level of education completed", 1, [education]),
        Item("MARITAL_STATUS", "Marital status", 1, [marital]),
        Item("OCCUPATION", "Main occupation", 3, [occupation], alpha=True),
        Item("WORK_HOURS", "Hours worked last week", 5, [hours], decimals=1, point=True),
    ]


def livestock_items():
    animal = plain_set("Kind of animal", codes(
        1, "Cattle", 2, "Goats", 3, "Sheep", 4, "Poultry", 5, "Donkeys", 8, "Other"))
    sold = plain_set("Animals sold", codes("0:900", "Animals"), missing(999))
    quarters = ["January to March", "April to June", "July to September",
                "October to December"]
    return [
        Item("ANIMAL", "Kind of animal", 1, [animal]),
        Item("ANIMAL_COUNT", "Number of animals", 4),
        Item("SOLD", "Animals sold in the quarter", 3, [sold], occurrences=4,
             occurrence_labels=quarters),
        Item("MILK", "Litres of milk on a usual day", 5, decimals=1, point=True),
        Item("VACCINATED", "Vaccinated in the past twelve months", 1,
             [plain_set("Vaccinated", yes_no(), missing(9), not_applicable())]),
        Item("ANIMAL_OTHER", "Other kind of animal", 12, alpha=True),
    ]


def make_dictionary():
    """Returns the id items and the records, all with their positions."""
    ids = id_items()
    records = [
        Record("HOUSEHOLD", "Household", "1",
               visit_items() + dwelling_items() + living_items()),
        Record("PERSON", "Person", "2", person_items(), max_records=30),
        Record("LIVESTOCK", "Livestock", "3", livestock_items(), required=False,
               max_records=6),
    ]
    first_free = place_items(ids, 2)
    for record in records:
        record.length = place_items(record.items, first_free) - 1
    return ids, records


def place_items(items, start):
    """Lays the items side by side and returns the first free column."""
    for item in items:
        item.start = start
        place_items(item.subitems, start)
        start += item.length * item.occurrences
    return start


# --- Writing the dictionary --------------------------------------------------

def code_text(item, value):
    """Blank and alphanumeric codes are quoted and as wide as the item."""
    if item.alpha or not value.codes:
        return f"'{value.codes:<{item.length}}'"
    return value.codes


def value_set_lines(item, value_set, number):
    lines = ["[ValueSet]", f"Label={value_set.label}", f"Name={item.name}_VS{number}"]
    if value_set.link:
        lines.append(f"Link={value_set.link}")
    for value in value_set.values:
        label = f";{value.label}" if value.label else ""
        lines.append(f"Value={code_text(item, value)}{label}")
        if value.special:
            lines.append(f"Name={value.special},Special")
    return lines + [""]


def item_lines(item, is_subitem=False):
    lines = ["[Item]", f"Label={item.label}", f"Name={item.name}"]
    lines += [f"Note={note}" for note in item.notes]
    lines += [f"Start={item.start}", f"Len={item.length}"]
    if is_subitem:
        lines.append("ItemType=SubItem")
    lines.append(f"DataType={'Alpha' if item.alpha else 'Numeric'}")
    if item.occurrences > 1:
        lines.append(f"Occurrences={item.occurrences}")
    if item.decimals:
        lines.append(f"Decimal={item.decimals}")
    if item.point:
        lines.append("DecimalChar=Yes")
    if item.zero_fill:
        lines.append("ZeroFill=Yes")
    lines += [f"OccurrenceLabel={i},{label}"
              for i, label in enumerate(item.occurrence_labels, 1)]
    lines.append("")
    for number, value_set in enumerate(item.sets, 1):
        lines += value_set_lines(item, value_set, number)
    for subitem in item.subitems:
        lines += item_lines(subitem, True)
    return lines


def record_lines(record):
    lines = ["[Record]", f"Label={record.label}", f"Name={record.name}",
             f"RecordTypeValue='{record.type}'"]
    if not record.required:
        lines.append("Required=No")
    if record.max_records > 1:
        lines.append(f"MaxRecords={record.max_records}")
    lines += [f"RecordLen={record.length}", ""]
    for item in record.items:
        lines += item_lines(item)
    return lines


def dictionary_lines(ids, records):
    lines = ["[Dictionary]", "Version=CSPro 7.7",
             "Label=Population and housing census of Velmora", "Name=CENSUS_DICT",
             "RecordTypeStart=1", "RecordTypeLen=1", "Positions=Relative",
             "ZeroFill=No", "DecimalChar=Yes", "",
             "[Level]", "Label=Census questionnaire", "Name=CENSUS_QUEST", "",
             "[IdItems]", ""]
    for item in ids:
        lines += item_lines(item)
    for record in records:
        lines += record_lines(record)
    while not lines[-1]:
        lines.pop()
    return lines


# --- Places ------------------------------------------------------------------

@dataclass
class Area:
    province: int
    district: int
    ea: int
    name: str
    urban: bool

    @property
    def code(self):
        return f"{self.province:02}{self.district:03}{self.ea:04}"


def make_areas(rng):
    """Two to four enumeration areas for each district, in the order of their codes."""
    names = [f"{prefix} {stem}" for prefix in AREA_PREFIXES for stem in AREA_STEMS]
    rng.shuffle(names)
    areas = []
    for province, _, districts in PROVINCES:
        for district, district_name in enumerate(districts, 1):
            for ea in range(1, rng.randint(2, 4) + 1):
                name = names.pop() if ea > 1 else district_name
                if rng.random() < 0.15:
                    name += ", " + rng.choice(AREA_QUARTERS)
                areas.append(Area(province, district, ea, name, ea == 1))
    return areas


# --- People ------------------------------------------------------------------

HEAD, SPOUSE, CHILD, PARENT, RELATIVE, UNRELATED = range(1, 7)
NEVER_MARRIED, MARRIED, TOGETHER, DIVORCED, WIDOWED = range(1, 6)


def chance(rng, share):
    return rng.random() < share


def pick(rng, weights):
    """One key of a dictionary of weights."""
    return rng.choices(list(weights), list(weights.values()))[0]


def make_members(rng, size):
    """Relationship, sex and age of each member; the head comes first."""
    head_sex = 1 if chance(rng, 0.7) else 2
    head_age = rng.choice([rng.randint(20, 45), rng.randint(25, 60), rng.randint(40, 85)])
    members = [(HEAD, head_sex, head_age)]
    younger_age = head_age
    if size > 1 and chance(rng, 0.75):
        age = max(head_age + rng.randint(-8, 6), 18)
        members.append((SPOUSE, 3 - head_sex, age))
        younger_age = min(younger_age, age)
    others = []
    while len(members) + len(others) < size:
        relation = pick(rng, {CHILD: 82, PARENT: 6, RELATIVE: 9, UNRELATED: 3})
        age = member_age(rng, relation, head_age, younger_age)
        taken = relation == PARENT and any(other[0] == PARENT for other in others)
        if age is not None and not taken:
            others.append((relation, rng.randint(1, 2), age))
    return members + sorted(others, key=lambda member: (member[0], -member[2]))


def member_age(rng, relation, head_age, younger_age):
    """The age of a further member, or None where the ages of the couple forbid one."""
    if relation == CHILD:
        lowest, highest = max(younger_age - 45, 0), min(younger_age - 17, 40)
    elif relation == PARENT:
        lowest, highest = head_age + 18, min(head_age + 33, MAX_AGE)
    else:
        lowest, highest = (0, 80) if relation == RELATIVE else (15, 65)
    return rng.randint(lowest, highest) if lowest <= highest else None


def marital_status(rng, relation, age, has_spouse, union):
    if age < 12:
        return None
    if chance(rng, 0.01):
        return 9
    if has_spouse and relation in (HEAD, SPOUSE):
        return union
    if age < 25:
        return NEVER_MARRIED
    if age >= 60:
        return WIDOWED if chance(rng, 0.7) else DIVORCED
    if relation == CHILD:
        return pick(rng, {NEVER_MARRIED: 9, DIVORCED: 1})
    return pick(rng, {NEVER_MARRIED: 4, DIVORCED: 4, WIDOWED: 2})


def education_level(rng, age):
    if age < 5:
        return None
    if chance(rng, 0.015):
        return 9
    reached = 0 if age < 10 else 1 if age < 15 else 2 if age < 18 else 3 if age < 21 else 4
    usual = pick(rng, {0: 10, 1: 30, 2: 30, 3: 20, 4: 10})
    return min(reached, usual)


def work(rng, age, urban):
    """Occupation and tenths of hours, or neither for those who do not work."""
    share = 0 if age < 15 else 0.3 if age < 20 else 0.72 if age < 65 else 0.2
    if not chance(rng, share):
        return None, None
    farming = 10 if urban else 60
    occupation = pick(rng, {"A": farming, "B1": 2, "B2": 9, "C": 8, "D10": 12, "D20": 5,
                            "E": 5, "F": 4, "G": 5, "X": 4, "Z": 2})
    hours = 9999 if chance(rng, 0.03) else 5 * rng.randint(1, 130)
    return occupation, hours


def birth_date(rng, age):
    """Eight digits that agree with the age; nines where a part is not known."""
    days_back = int(age * 365.25) + rng.randint(1, 363)
    born = CENSUS_DAY - datetime.timedelta(days=days_back)
    draw = rng.random()
    if draw < 0.02:
        return "99999999"
    if draw < 0.05:
        return f"{born:%Y}9999"
    if draw < 0.10:
        return f"{born:%Y%m}99"
    return f"{born:%Y%m%d}"


def languages(rng, age):
    if age < 3:
        return [None, None, None]
    known = [pick(rng, {1: 70, 2: 10, 3: 12, 96: 3})]
    while len(known) < 3 and chance(rng, 0.3):
        further = pick(rng, {1: 30, 2: 10, 3: 10, 4: 25, 5: 20, 96: 5})
        if further not in known:
            known.append(further)
    return known + [None] * (3 - len(known))


def earlier_province(rng, age, province):
    if age < 5:
        return None
    if chance(rng, 0.06):
        return rng.choice(PROVINCES)[0]
    return province


def make_persons(rng, area, members, weight):
    family = rng.choice(FAMILY_NAMES)
    has_spouse = any(relation == SPOUSE for relation, _, _ in members)
    union = MARRIED if chance(rng, 0.75) else TOGETHER
    given_names = {sex: rng.sample(names, len(names)) for sex, names in GIVEN_NAMES.items()}
    persons = []
    for line, (relation, sex, age) in enumerate(members, 1):
        surname = family if relation <= CHILD else rng.choice(FAMILY_NAMES)
        occupation, hours = work(rng, age, area.urban)
        given = given_names[sex].pop()
        persons.append({
            "LINE_NUMBER": line,
            "FULL_NAME": f"{given:<15}{surname:<15}",
            "RELATIONSHIP": relation,
            "SEX": sex,
            "BIRTH_DATE": birth_date(rng, age),
            "AGE": 99 if chance(rng, 0.01) else age,
            "PERSON_WEIGHT": (weight + 50) // 100,
            "LANGUAGE": languages(rng, age),
            "EARLIER_PROVINCE": earlier_province(rng, age, area.province),
            "EDUCATION": education_level(rng, age),
            "MARITAL_STATUS": marital_status(rng, relation, age, has_spouse, union),
            "OCCUPATION": occupation,
            "WORK_HOURS": hours,
        })
    return persons


# --- Households and their animals --------------------------------------------

def make_deaths(rng):
    deaths = [None, None, None]
    count = pick(rng, {0: 940, 1: 50, 2: 8, 3: 2})
    for i in range(count):
        age = pick(rng, {rng.randint(0, 4): 3, rng.randint(5, 59): 3,
                         rng.randint(60, 95): 6, 99: 1})
        deaths[i] = f"{rng.randint(1, 2)}{age:02}"
    return deaths


def water_supply(rng, urban):
    """Source of the water and tenths of hours; hours for piped water only."""
    piped = 60 if urban else 15
    source = pick(rng, {"A": piped, "B": 25, "C1": 20, "C2": 10, "D": 8, "X": 2, "Z": 1})
    if source != "A":
        return source, None
    if chance(rng, 0.04):
        return source, 999
    return source, 0 if chance(rng, 0.05) else 5 * rng.randint(1, 48)


def household_income(rng):
    if chance(rng, 0.05):
        return 999998
    if chance(rng, 0.04):
        return 999999
    return 0 if chance(rng, 0.03) else 50 * rng.randint(4, 900)


def telephone(rng):
    return 210 * 10**9 + rng.randint(200_000_000, 899_999_999) if chance(rng, 0.7) else None


def make_household(rng, area, size, weight):
    visit = CENSUS_DAY + datetime.timedelta(days=pick(
        rng, {day: 10 if day % 7 < 5 else 2 for day in range(26)}))
    source, hours = water_supply(rng, area.urban)
    shares = {100: 1, None: 9} if area.urban else {25: 10, 50: 25, 75: 10, 100: 40, None: 15}
    lowest = -20 if area.province == 40 else 5
    return {
        "AREA_CODE": area.code,
        "VISIT_DATE": f"{visit:%Y%m%d}",
        "VISIT_DAY": visit.isoweekday(),
        "START_TIME": f"{rng.randint(7, 19):02}{rng.randint(0, 59):02}",
        "PERSONS": size,
        "URBAN_RURAL": 1 if area.urban else 2,
        "ALTITUDE": rng.randint(lowest, 120 if lowest < 0 else 1900),
        "WALLS": pick(rng, {11: 30, 12: 12, 13: 20, 21: 18, 22: 7, 31: 9, 96: 3, 99: 1}),
        "ROOMS": 99 if chance(rng, 0.01) else rng.randint(1, 2 + size // 2),
        "WATER_SOURCE": source,
        "WATER_HOURS": hours,
        "ASSET": [pick(rng, {1: owned, 2: 99 - owned, 9: 1}) for owned in (70, 55, 40, 30)],
        "LAND_SHARE": pick(rng, shares),
        "INCOME": household_income(rng),
        "FOOD_SHORTAGE": pick(rng, {1: 12, 2: 86, 9: 2}),
        "DEATH": make_deaths(rng),
        "HOUSEHOLD_WEIGHT": weight,
        "PHONE": telephone(rng),
        "REMARKS": rng.choice(REMARKS) if chance(rng, 0.06) else None,
    }


def make_livestock(rng, area):
    if not chance(rng, 0.06 if area.urban else 0.4):
        return []
    kinds = sorted({pick(rng, {1: 25, 2: 20, 3: 15, 4: 35, 5: 5, 8: 6}) for _ in range(3)})
    return [make_animal(rng, kind) for kind in kinds]


def make_animal(rng, kind):
    count = rng.randint(1, 400 if kind == 4 else 40)
    milked = kind in (1, 2) and chance(rng, 0.6)
    return {
        "ANIMAL": kind,
        "ANIMAL_COUNT": count,
        "SOLD": [999 if chance(rng, 0.02) else rng.randint(0, count // 4) for _ in range(4)],
        "MILK": rng.randint(5, 60 * count) if milked else None,
        "VACCINATED": None if kind == 8 else pick(rng, {1: 55, 2: 40, 9: 5}),
        "ANIMAL_OTHER": rng.choice(OTHER_ANIMALS) if kind == 8 else None,
    }


# --- Writing the data --------------------------------------------------------

def field_text(item, value):
    """One occurrence; a number with decimals comes in units of its last place."""
    if value is None:
        return " " * item.length
    text = str(value)
    if item.alpha:
        text = text.ljust(item.length)
    else:
        if item.point:
            text = text.zfill(item.decimals + 1)
            text = f"{text[:-item.decimals]}.{text[-item.decimals:]}"
        text = text.rjust(item.length, "0" if item.zero_fill else " ")
    if len(text) != item.length:
        raise ValueError(f"{item.name}: {value} does not fit")
    return text


def items_text(items, values):
    text = ""
    for item in items:
        value = values[item.name]
        occurrences = value if isinstance(value, list) else [value]
        text += "".join(field_text(item, one) for one in occurrences)
    return text


def case_lines(rng, ids, records, area, number):
    """The lines of one household; trailing blanks are cut, the ids never are."""
    id_text = items_text(ids, {"PROVINCE": area.province, "DISTRICT": area.district,
                               "EA": area.ea, "HOUSEHOLD_NUMBER": number})
    size = pick(rng, {1: 9, 2: 14, 3: 17, 4: 19, 5: 15, 6: 11, 7: 8, 8: 4, 9: 3})
    weight = 80_000 + 4_000 * (area.province % 10) + rng.randint(0, 30_000)
    household = make_household(rng, area, size, weight)
    persons = make_persons(rng, area, make_members(rng, size), weight)
    contents = [[household], persons, make_livestock(rng, area)]
    return [record.type + id_text + items_text(record.items, values).rstrip(" ")
            for record, many in zip(records, contents) for values in many]


def data_lines(rng, ids, records, areas):
    weights = [2 if area.urban else 1 for area in areas]
    chosen = rng.choices(range(len(areas)), weights, k=HOUSEHOLDS)
    lines = []
    for i, area in enumerate(areas):
        for number in range(1, chosen.count(i) + 1):
            lines += case_lines(rng, ids, records, area, number)
    return lines


def write_lines(path, lines, mark, line_end):
    text = "".join(line + line_end for line in lines)
    path.write_bytes(mark + text.encode("utf-8"))


def main():
    directory = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent
    directory.mkdir(parents=True, exist_ok=True)
    rng = random.Random(SEED)
    ids, records = make_dictionary()
    areas = make_areas(rng)
    byte_order_mark = b"\xef\xbb\xbf"
    write_lines(directory / "census.dcf", dictionary_lines(ids, records),
                byte_order_mark, "\r\n")
    write_lines(directory / "census.dat", data_lines(rng, ids, records, areas),
                byte_order_mark, "\r\n")
    write_lines(directory / "places.csv", [f"{area.code},{area.name}" for area in areas],
                b"", "\n")


if __name__ == "__main__":
    main()
