-- A sample agency: 500 clients, three users and their saved marketing queries. Everything in it is
-- made up, and running it again gives the same rows.

CREATE TABLE Users (
  UserID INTEGER PRIMARY KEY,
  Login VARCHAR(50) NOT NULL,
  Permissions VARCHAR(250)
);

-- Character 200 of the permissions allows marketing queries.
INSERT INTO Users VALUES
  (1, 'admin', ''),
  (2, 'jsmith', PRINTF('%.199c1%.10c', '0', '0')),
  (3, 'trainee', PRINTF('%.210c', '0'));

CREATE TABLE Clients (
  ProfileNumber INTEGER PRIMARY KEY,
  Prefix VARCHAR(20),
  FirstName NVARCHAR(60),
  LastName NVARCHAR(60),
  FullName NVARCHAR(130),
  Attention NVARCHAR(130),
  Phone VARCHAR(30),
  Fax VARCHAR(30),
  Email NVARCHAR(120),
  SendEmail BIT,
  Birthdate DATETIME,
  AnniversaryDate DATETIME,
  TravelDate DATETIME,
  ReturnDate DATETIME,
  FirstDate DATETIME,
  LastDate DATETIME
);

CREATE TEMP TABLE FirstNames (n INTEGER PRIMARY KEY, prefix TEXT, name TEXT, mailbox TEXT);
INSERT INTO FirstNames VALUES
  (0, 'Ms.', 'Zoë', 'zoe'), (1, 'Mr.', 'José', 'jose'), (2, 'Mrs.', 'Ingrid', 'ingrid'),
  (3, 'Mr.', 'Søren', 'soren'), (4, 'Ms.', 'Chloé', 'chloe'), (5, 'Mr.', 'Jürgen', 'juergen'),
  (6, 'Mrs.', 'Margaret', 'margaret'), (7, 'Mr.', 'Patrick', 'patrick'),
  (8, 'Ms.', 'Renée', 'renee'), (9, 'Mr.', 'Björn', 'bjorn'), (10, 'Mrs.', 'Inês', 'ines'),
  (11, 'Mr.', 'Walter', 'walter'), (12, 'Ms.', 'Hannah', 'hannah'), (13, 'Mr.', 'Raúl', 'raul'),
  (14, 'Dr.', 'Françoise', 'francoise'), (15, 'Mr.', 'Daniel', 'daniel'),
  (16, 'Ms.', 'Begoña', 'begona'), (17, 'Mr.', 'Étienne', 'etienne'), (18, 'Mrs.', 'Ruth', 'ruth');

CREATE TEMP TABLE LastNames (n INTEGER PRIMARY KEY, name TEXT, mailbox TEXT);
INSERT INTO LastNames VALUES
  (0, 'Lindström', 'lindstrom'), (1, 'O''Brien', 'obrien'), (2, 'García', 'garcia'),
  (3, 'Müller', 'mueller'), (4, 'Carter', 'carter'), (5, 'Lefèvre', 'lefevre'),
  (6, 'Nuñez', 'nunez'), (7, 'van der Meer', 'vandermeer'), (8, 'Ångström', 'angstrom'),
  (9, 'Whitfield', 'whitfield'), (10, 'Conceição', 'conceicao'), (11, 'Strauß', 'strauss'),
  (12, 'Hughes', 'hughes'), (13, 'Jørgensen', 'jorgensen'), (14, 'Ferreira', 'ferreira'),
  (15, 'Castañeda', 'castaneda'), (16, 'Dupré', 'dupre'), (17, 'Abbott', 'abbott'),
  (18, 'Höfler', 'hoefler'), (19, 'Kowalski', 'kowalski'), (20, 'Peña', 'pena'),
  (21, 'St. John-Smythe', 'stjohnsmythe'), (22, 'Ibáñez', 'ibanez');

-- Birthdays go round the year in the order of the profile numbers, so that thirty days hold some
-- forty of them on any day of the year. Every twelfth client is the partner of the one before and
-- shares that one's address, written in capitals.
WITH RECURSIVE Numbers (n) AS (SELECT 0 UNION ALL SELECT n + 1 FROM Numbers WHERE n < 499),
Named AS (
  SELECT
    Numbers.n,
    f.prefix,
    f.name AS first_name,
    l.name AS last_name,
    CASE
      WHEN Numbers.n % 37 = 5 THEN NULL
      WHEN Numbers.n % 41 = 7 THEN 'no address on file'
      WHEN Numbers.n % 12 = 11 THEN UPPER(LAG(f.mailbox || '.' || l.mailbox) OVER (ORDER BY Numbers.n))
        || '.' || (Numbers.n - 1) || '@Example.ORG'
      ELSE f.mailbox || '.' || l.mailbox || '.' || Numbers.n || '@example.'
        || CASE Numbers.n % 3 WHEN 0 THEN 'com' WHEN 1 THEN 'org' ELSE 'net' END
    END AS email
  FROM Numbers
  JOIN FirstNames AS f ON f.n = (Numbers.n * 7 + Numbers.n / 19) % 19
  JOIN LastNames AS l ON l.n = (Numbers.n * 5 + Numbers.n / 23) % 23
)
INSERT INTO Clients
SELECT
  1001 + n,
  prefix,
  first_name,
  last_name,
  first_name || ' ' || last_name,
  CASE WHEN n % 6 = 0 THEN prefix || ' ' || last_name WHEN n % 6 = 1 THEN '' END,
  PRINTF('(555) 555-01%02d', n % 100),
  CASE WHEN n % 4 = 0 THEN PRINTF('(555) 555-01%02d', (n + 50) % 100) END,
  email,
  CASE WHEN n % 15 = 3 THEN 0 WHEN n % 25 = 9 THEN NULL ELSE 1 END,
  CASE WHEN n % 23 = 8 THEN NULL
       ELSE DATETIME('1930-01-01', '+' || (n * 31 % 75) || ' years', '+' || (n * 73 / 100) || ' days')
  END,
  CASE WHEN n % 3 = 0 THEN DATETIME('1960-05-02', '+' || (n * 17 % 60) || ' years', '+' || (n * 11 % 365) || ' days') END,
  DATETIME('2026-01-05', '+' || (n * 13 % 700) || ' days'),
  DATETIME('2026-01-05', '+' || (n * 13 % 700 + 7 + n % 15) || ' days'),
  DATETIME('2009-03-01', '+' || (n * 29 % 5000) || ' days'),
  DATETIME('2024-02-01', '+' || (n * 19 % 900) || ' days')
FROM Named;

DROP TABLE FirstNames;
DROP TABLE LastNames;

CREATE TABLE MarketingQueries (
  QueryID INTEGER PRIMARY KEY,
  UserID INTEGER NOT NULL,
  QueryName VARCHAR(100) NOT NULL,
  QueryString NTEXT
);

-- User 0 is everybody.
INSERT INTO MarketingQueries (UserID, QueryName, QueryString) VALUES
  (0, 'Birthday clients',
   'SELECT * FROM Clients WHERE MONTH(Birthdate)*100+DAY(Birthdate) IN [NEXT7DAYS]'),
  (2, 'Birthday clients',
   'SELECT * FROM Clients WHERE MONTH(Birthdate)*100+DAY(Birthdate) IN [NEXT30DAYS]'),
  (0, 'Silver weddings', 'SELECT * FROM Clients WHERE AnniversaryDate IS NOT NULL [25]'),
  (0, 'Welcome home',
   'SELECT * FROM Clients WHERE ReturnDate>=[LAST7DAYS] AND ReturnDate<=[YESTERDAY]'),
  (2, 'Not yet written', NULL);
